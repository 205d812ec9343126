#include "kiln/connector.h"

#include <fcntl.h>
#include <sys/ioctl.h>

#include "kiln/files.h"
#include "kiln/owners.h"
#include "tests/kiln/kiln_support.h"

namespace {

int waiting_in(int fd) {
    int bytes = 0;
    ioctl(fd, FIONREAD, &bytes);
    return bytes;
}

TEST(Connectors, LimitWhatTheyKeepAndSayWhetherToGoOn) {
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
    const Kiln::Descriptor zeros(open("/dev/zero", O_RDONLY));
    pollfd entry = {zeros.get(), 0, 0};
    for (const Case& c : cases) {
        Kiln::CtoDynaBuf buffer(c.limit, c.drain, &entry, tee[1]);
        EXPECT_EQ(buffer.process(), c.result) << c.limit;
        EXPECT_EQ(buffer.buffer.size(), c.kept) << c.limit;
        EXPECT_EQ(waiting_in(tee[0]), c.copied) << c.limit;
    }
    Kiln::CtoDynaBuf buffer(~0UL, false, &entry, tee[0]);  // nothing can be written there
    EXPECT_EQ(buffer.process(), 4096);
    EXPECT_EQ(buffer.tee_fd, -1);
    EXPECT_EQ(close(tee[0]), -1);
    close(tee[1]);
    EXPECT_EQ(Kiln::CtoStaticBuf(&entry).process(), 0);
}

int ends[2] = {-1, -1};

TEST(WriteAll, GoesOnAfterAnInterruptionAndTellsWhatIsLeft) {
    ASSERT_EQ(pipe(ends), 0);
    ASSERT_EQ(Kiln::write_all(ends[1], std::string(65536, 'x').data(), 65536), 0U);  // full now
    soon([](int) {
        char room[65536];
        EXPECT_EQ(read(ends[0], room, sizeof room), 65536);
    });
    EXPECT_EQ(Kiln::write_all(ends[1], "yz", 2), 0U);
    EXPECT_EQ(waiting_in(ends[0]), 2);
    Kiln::setFDNonblock(ends[1]);
    const std::size_t left = Kiln::write_all(ends[1], std::string(70000, 'x').data(), 70000);
    EXPECT_EQ(errno, EAGAIN);
    EXPECT_EQ(waiting_in(ends[0]) + static_cast<int>(left), 70002);
    close(ends[0]);
    close(ends[1]);
}

}  // namespace
