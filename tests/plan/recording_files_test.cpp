// Recordings from files that anybody may have made: what is read, and what is said instead.
#include <gtest/gtest.h>

#include "plan/recording/recording_files.h"
#include "tests/plan/recordings.h"

namespace {

constexpr std::uint64_t mib = std::uint64_t{1} << 20;

TEST(RecordingFiles, WhatCannotBeReadHasOneSentence) {
    const MadeUpHost files;
    const auto reason_of = [&](const std::string& name) {
        const std::string reason = read_recording(files.path(name), usual_most_bytes).reason();
        return reason.empty() ? "" : reason.substr(files.path(name).size());
    };
    ASSERT_TRUE(files.shell("mkfifo fifo && ln -s fifo link"));
    EXPECT_EQ(reason_of("gone"), " cannot be read: No such file or directory");
    EXPECT_EQ(reason_of("link"), " cannot be read: it is a FIFO");

    const std::string header = header_line(header_of("box"));
    const std::pair<std::string, const char*> rows[] = {
        {header + std::string(mib + 1, 'a'), " cannot be read: line 2 is longer than 1 MiB"},
        {header + std::string(1000000, '[') + "\n" + header, ": line 2: nested deeper than 32"},
        {header + "{}\n\n{}\n", ": line 3: this is not JSON"},
        {"root:x:0:0::/root:/bin/sh\n", ": line 1: this is not JSON"},
        {"no recording", ": line 1: this is no recording"},
        {"{\"recording_for", ": its first line was never written"},
        {std::string(200, '\0') + "\n", ": its first line was never written"},
    };
    for (const auto& [text, reason] : rows) {
        files.put("x", text);
        EXPECT_EQ(reason_of("x"), reason) << text.substr(0, 200);
    }
}

}  // namespace
