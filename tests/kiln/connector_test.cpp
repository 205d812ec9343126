#include "kiln/connector.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <limits>
#include <string>

#include "tests/kiln/kiln_support.h"

namespace {

constexpr unsigned long no_limit = std::numeric_limits<unsigned long>::max();

pollfd entry_for(int fd) {
    return {fd, 0, 0};
}

// What has arrived in a pipe, up to 64 KiB.
std::string received(const Pipe& pipe) {
    std::string text(65536, '\0');
    Kiln::setFDNonblock(pipe.reader());
    const ssize_t count = read(pipe.reader(), text.data(), text.size());
    text.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return text;
}

TEST(CtoDynaBuf, LimitsWhatItKeepsAndSaysWhetherToGoOn) {
    const std::string text = "0123456789abcdefghijklmno";
    struct Case {
        unsigned long limit;
        bool drain;
        long result;
        std::size_t kept;
        std::size_t copied;
    };
    const Case cases[] = {
        {no_limit, true, 25, 25, 25}, {26, false, 25, 25, 25}, {25, true, 25, 25, 25},
        {25, false, 0, 25, 0},  // just full, though nothing was dropped
        {10, true, 25, 10, 25},       {10, false, 0, 10, 0},   {0, true, 25, 0, 25},
    };
    for (const Case& c : cases) {
        const Pipe input(text);
        const Pipe tee;
        pollfd entry = entry_for(input.reader());
        Kiln::CtoDynaBuf buffer(c.limit, c.drain, &entry, tee.writer());
        EXPECT_EQ(buffer.process(), c.result) << c.limit;
        EXPECT_EQ(buffer.buffer, text.substr(0, c.kept)) << c.limit;
        EXPECT_EQ(received(tee), text.substr(0, c.copied)) << c.limit;
    }
}

TEST(CtoDynaBuf, ReadsInChunksToTheEnd) {
    Pipe input(std::string(5000, 'x'));
    input.close_writer();
    pollfd entry = entry_for(input.reader());
    Kiln::CtoDynaBuf buffer(4999, true, &entry, -1);
    EXPECT_EQ(buffer.process(), 4096);
    EXPECT_EQ(buffer.process(), 904);
    EXPECT_EQ(buffer.process(), 0);
    EXPECT_EQ(buffer.buffer.size(), 4999U);
    entry.fd = -1;
    EXPECT_EQ(buffer.process(), -EBADF);
}

TEST(CtoDynaBuf, AnInterruptedReadNeitherAddsNorEnds) {
    const SignalStorm storm;
    const Pipe input;
    pollfd entry = entry_for(input.reader());
    Kiln::CtoDynaBuf buffer(no_limit, true, &entry, -1);
    EXPECT_GE(buffer.process(), 1);
    EXPECT_EQ(buffer.buffer, "");
}

TEST(CtoDynaBuf, GivesUpATeeThatFails) {
    const auto old_handler = std::signal(SIGPIPE, SIG_IGN);
    const Pipe input("abc");
    Pipe tee;
    tee.close_reader();
    const int tee_copy = dup(tee.writer());
    pollfd entry = entry_for(input.reader());
    Kiln::CtoDynaBuf buffer(no_limit, true, &entry, tee_copy);
    EXPECT_EQ(buffer.process(), 3);
    EXPECT_EQ(buffer.tee_fd, -1);
    EXPECT_EQ(open_descriptors().count(tee_copy), 0U);
    Kiln::write_all(input.writer(), "de", 2);
    EXPECT_EQ(buffer.process(), 2);
    EXPECT_EQ(buffer.buffer, "abcde");
    std::signal(SIGPIPE, old_handler);
}

TEST(CfromStaticBuf, WritesChunksThatAllBeginAtTheStart) {
    const std::string text = std::string(4096, 'a') + std::string(904, 'b');
    const Pipe output;
    pollfd entry = entry_for(output.writer());
    Kiln::CfromStaticBuf source(text.data(), text.size(), &entry);
    EXPECT_EQ(source.process(), 1);
    EXPECT_EQ(source.written, 4096U);
    EXPECT_EQ(source.process(), 0);
    EXPECT_EQ(source.written, 5000U);
    EXPECT_EQ(received(output), std::string(5000, 'a'));
    entry.fd = -1;
    source.written = 0;
    EXPECT_EQ(source.process(), -EBADF);
}

}  // namespace
