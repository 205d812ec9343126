#include "kiln/connector.h"

#include <gtest/gtest.h>

#include "tests/kiln/kiln_support.h"

namespace {

constexpr unsigned long no_limit = ~0UL;

// What has arrived in a pipe, up to 64 KiB.
std::string received(const Pipe& pipe) {
    std::string text(65536, '\0');
    Kiln::setFDNonblock(pipe.ends[0]);
    const ssize_t count = read(pipe.ends[0], text.data(), text.size());
    text.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    return text;
}

TEST(CtoDynaBuf, LimitsWhatItKeepsAndSaysWhetherToGoOn) {
    const std::string text(5000, 'x');
    struct Case {
        unsigned long limit;
        bool drain;
        long result;
        std::size_t kept;
        std::size_t copied;
    };
    const Case cases[] = {
        {no_limit, true, 4096, 4096, 4096}, {4097, false, 4096, 4096, 4096},
        {4096, false, 0, 4096, 0},  // just full, though nothing was dropped
        {10, true, 4096, 10, 4096},         {0, true, 4096, 0, 4096},
    };
    for (const Case& c : cases) {
        const Pipe input(text);
        const Pipe tee;
        pollfd entry = {input.ends[0], 0, 0};
        Kiln::CtoDynaBuf buffer(c.limit, c.drain, &entry, tee.ends[1]);
        EXPECT_EQ(buffer.process(), c.result) << c.limit;
        EXPECT_EQ(buffer.buffer.size(), c.kept) << c.limit;
        EXPECT_EQ(received(tee).size(), c.copied) << c.limit;
    }
}

TEST(CtoDynaBuf, AnInterruptedReadNeitherAddsNorEnds) {
    const SignalStorm storm;
    const Pipe input;
    pollfd entry = {input.ends[0], 0, 0};
    Kiln::CtoDynaBuf buffer(no_limit, true, &entry, -1);
    EXPECT_GE(buffer.process(), 1);
    EXPECT_EQ(buffer.buffer, "");
    entry.fd = -1;
    EXPECT_EQ(buffer.process(), -EBADF);
}

TEST(CtoDynaBuf, GivesUpATeeThatFails) {
    const Pipe input("abc");
    const int tee = dup(input.ends[0]);  // nothing can be written there
    pollfd entry = {input.ends[0], 0, 0};
    Kiln::CtoDynaBuf buffer(no_limit, true, &entry, tee);
    EXPECT_EQ(buffer.process(), 3);
    EXPECT_EQ(buffer.tee_fd, -1);
    EXPECT_EQ(open_descriptors().count(tee), 0U);
    EXPECT_EQ(buffer.buffer, "abc");
}

TEST(CfromStaticBuf, WritesChunksThatAllBeginAtTheStart) {
    const std::string text = std::string(4096, 'a') + std::string(904, 'b');
    const Pipe output;
    pollfd entry = {output.ends[1], 0, 0};
    Kiln::CfromStaticBuf source(text.data(), text.size(), &entry);
    EXPECT_EQ(source.process(), 1);
    EXPECT_EQ(source.process(), 0);
    EXPECT_EQ(source.written, 5000U);
    EXPECT_EQ(received(output), std::string(5000, 'a'));
    entry.fd = -1;
    source.written = 0;
    EXPECT_EQ(source.process(), -EBADF);
}

}  // namespace
