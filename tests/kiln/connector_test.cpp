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
    // Limit, whether to drain; result, bytes kept, bytes copied up to here.
    const std::tuple<unsigned long, bool, long, std::size_t, int> cases[] = {
        {4097, false, 4096, 4096, 4096},
        {4096, false, 0, 4096, 4096},  // just full, though nothing was dropped
        {10, true, 4096, 10, 8192},
    };
    int tee[2] = {-1, -1};
    ASSERT_EQ(pipe(tee), 0);
    const Kiln::Descriptor zeros(open("/dev/zero", O_RDONLY));
    pollfd entry = {zeros.get(), 0, 0};
    for (const auto& [limit, drain, result, kept, copied] : cases) {
        Kiln::CtoDynaBuf buffer(limit, drain, &entry, tee[1]);
        EXPECT_EQ(buffer.process(), result) << limit;
        EXPECT_EQ(buffer.buffer.size(), kept) << limit;
        EXPECT_EQ(waiting_in(tee[0]), copied) << limit;
    }
    Kiln::CtoDynaBuf buffer(~0UL, false, &entry, tee[0]);  // nothing can be written there
    EXPECT_EQ(buffer.process(), 4096);
    EXPECT_EQ(buffer.tee_fd, -1);
    EXPECT_EQ(close(tee[0]), -1);
    close(tee[1]);
    EXPECT_EQ(Kiln::CtoStaticBuf(&entry).process(), 0);
}

int ends[2] = {-1, -1};

TEST(WriteAll, GoesOnAfterInterruptedAndPartialWritesAndTellsWhatIsLeft) {
    ASSERT_EQ(pipe(ends), 0);
    const std::string full(65536, 'x');  // what a pipe holds
    char text[65537] = "";
    for (const std::size_t already : {full.size(), std::size_t{0}}) {
        EXPECT_EQ(Kiln::write_all(ends[1], full.data(), already), 0U);
        soon([](int) {
            char room[65536];
            EXPECT_EQ(read(ends[0], room, sizeof room), 65536);
        });
        const std::string more = full.substr(already) + "yz";
        EXPECT_EQ(Kiln::write_all(ends[1], more.data(), more.size()), 0U);
        EXPECT_EQ(read(ends[0], text, sizeof text), 2);
        EXPECT_STREQ(text, "yz");
    }
    Kiln::setFDNonblock(ends[1]);
    EXPECT_EQ(Kiln::write_all(ends[1], (full + full).data(), 2 * full.size()), full.size());
    EXPECT_EQ(errno, EAGAIN);
    close(ends[0]);
    close(ends[1]);
}

}  // namespace
