#include "kiln/connector.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "kiln/files.h"

namespace {

TEST(CtoDynaBuf, LimitsWhatItKeepsAndSaysWhetherToGoOn) {
    struct Case {
        unsigned long limit;
        bool drain;
        long result;
        std::size_t kept;
        int copied;  // up to here
    };
    const Case cases[] = {
        {4097, false, 4096, 4096, 4096},
        {4096, false, 0, 4096, 4096},  // just full, though nothing was dropped
        {10, true, 4096, 10, 8192},
    };
    int tee[2] = {-1, -1};
    ASSERT_EQ(pipe(tee), 0);
    pollfd entry = {open("/dev/zero", O_RDONLY), 0, 0};
    for (const Case& c : cases) {
        Kiln::CtoDynaBuf buffer(c.limit, c.drain, &entry, tee[1]);
        EXPECT_EQ(buffer.process(), c.result) << c.limit;
        EXPECT_EQ(buffer.buffer.size(), c.kept) << c.limit;
        int copied = 0;
        ioctl(tee[0], FIONREAD, &copied);
        EXPECT_EQ(copied, c.copied) << c.limit;
    }
    Kiln::setFDNonblock(tee[1]);  // the pipe holds 65536 bytes
    EXPECT_EQ(Kiln::write_all(tee[1], std::string(70000, 'x').data(), 70000), 12656U);

    Kiln::CtoDynaBuf buffer(~0UL, false, &entry, tee[0]);  // nothing can be written there
    EXPECT_EQ(buffer.process(), 4096);
    EXPECT_EQ(buffer.tee_fd, -1);
    EXPECT_EQ(close(tee[0]), -1);
    close(tee[1]);
    close(entry.fd);
}

}  // namespace
