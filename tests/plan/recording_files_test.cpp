// Recordings from files that anybody may have made: what is read, and what is said instead.
#include <gtest/gtest.h>

#include "plan/recording/recording_files.h"
#include "tests/plan/recordings.h"

namespace {

constexpr std::uint64_t mib = std::uint64_t{1} << 20;
const std::string header = header_line(header_of("box"));

// A line that a later program may have added, so long with its newline.
std::string line_of(std::size_t size) {
    return "{\"x\":\"" + std::string(size - 9, 'a') + "\"}\n";
}

std::string nested(int depth) {
    const auto times = static_cast<std::size_t>(depth);
    return "{\"x\":" + std::string(times - 1, '[') + std::string(times - 1, ']') + "}\n";
}

// Why the made-up file cannot be read, behind its path.
std::string reason_of(const MadeUpHost& files, const std::string& name,
                      std::uint64_t most_bytes = usual_most_bytes) {
    const std::string reason = read_recording(files.path(name), most_bytes).reason();
    return reason.empty() ? "" : reason.substr(files.path(name).size());
}

TEST(RecordingFiles, WhatCannotBeReadHasOneSentence) {
    const MadeUpHost files;
    ASSERT_TRUE(files.shell("mkfifo fifo && ln -s fifo link && ln -s /dev/zero zero"));
    EXPECT_EQ(reason_of(files, "gone"), " cannot be read: No such file or directory");
    EXPECT_EQ(reason_of(files, "link"), " cannot be read: it is a FIFO");
    EXPECT_EQ(reason_of(files, "zero"), " cannot be read: it is a device");
    EXPECT_EQ(reason_of(files, ""), " cannot be read: it is a folder");

    const std::pair<std::string, const char*> rows[] = {
        {header + line_of(mib + 1), ""},
        {header + line_of(mib + 2), " cannot be read: line 2 is longer than 1 MiB"},
        {header + std::string(mib + 1, 'a'), " cannot be read: line 2 is longer than 1 MiB"},
        {std::string(3 * mib, '\0'), " cannot be read: line 1 is longer than 1 MiB"},
        {header + nested(32), ""},
        {header + nested(33), ": line 2: nested deeper than 32"},
        {std::string(1000000, '['), ": line 1: this is no recording"},
        {header + std::string(1000000, '[') + "\n" + header, ": line 2: nested deeper than 32"},
        {header + "{}\n\n{}\n", ": line 3: this is not JSON"},
        {"\n\n" + header, ": line 1: this is not JSON"},
        {"root:x:0:0::/root:/bin/sh\n", ": line 1: this is not JSON"},
        {"no recording", ": line 1: this is no recording"},
        {"{\"recording_for", ": its first line was never written"},
        {std::string(200, '\0') + "\n", ": its first line was never written"},
        {"\n\n", ": its first line was never written"},
        {"", ": its first line was never written"},
    };
    for (const auto& [text, reason] : rows) {
        files.put("x", text);
        EXPECT_EQ(reason_of(files, "x"), reason) << text.substr(0, 200);
    }
    files.put("x", header + line_of(1024 - header.size()));
    EXPECT_EQ(reason_of(files, "x", 1024), "");
    EXPECT_EQ(reason_of(files, "x", 1023),
              " cannot be read: it is larger than 1023 bytes; --max-size allows more");
}

}  // namespace
