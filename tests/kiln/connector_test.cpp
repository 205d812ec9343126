#include "kiln/connector.h"

#include <fcntl.h>

#include "kiln/files.h"
#include "tests/kiln/kiln_support.h"

namespace {

TEST(Connectors, LimitWhatTheyKeepAndSayWhetherToGoOn) {
    // Limit, whether to drain; result, bytes kept, bytes copied up to here.
    const std::tuple<unsigned long, bool, long, std::size_t, off_t> cases[] = {
        {4097, false, 4096, 4096, 4096},
        {4096, false, 0, 4096, 4096},  // just full, though nothing was dropped
        {10, true, 4096, 10, 8192},
    };
    const Kiln::File tee(std::tmpfile());
    const Kiln::Descriptor zeros(open("/dev/zero", O_RDONLY));
    pollfd entry = {zeros.get(), 0, 0};
    for (const auto& [limit, drain, result, kept, copied] : cases) {
        Kiln::CtoDynaBuf buffer(limit, drain, &entry, fileno(tee.get()));
        EXPECT_EQ(buffer.process(), result) << limit;
        EXPECT_EQ(buffer.buffer.size(), kept) << limit;
        EXPECT_EQ(lseek(fileno(tee.get()), 0, SEEK_CUR), copied) << limit;
    }
    const int unwritable = dup(zeros.get());
    Kiln::CtoDynaBuf buffer(~0UL, false, &entry, unwritable);
    EXPECT_EQ(buffer.process(), 4096);
    EXPECT_EQ(buffer.tee_fd, -1);
    EXPECT_EQ(close(unwritable), -1);
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
}

}  // namespace
