// The signal mask, and what an entry changes about its process, tried in processes of their own.
#include <sys/resource.h>

#include <cerrno>

#include "kiln/process_setup.h"
#include "kiln/sig_mask.h"
#include "tests/kiln/kiln_support.h"

namespace {

// A pipe in their place would lose what is meant for them without a word.
TEST(ProcessSetup, ClosedDescriptorsAreFilledWithWhatRefusesItsUse) {
    in_own_process([] {
        close(0), close(1), close(2);
        errno = 0;
        prepare_process();
        EXPECT_EQ(errno, 0);  // a time span fails on any that is left behind
        char byte = 0;
        EXPECT_TRUE(read(0, &byte, 1) < 0 && write(1, "", 1) < 0 && write(2, "", 1) < 0);
        EXPECT_GT(dup(0), 2);
    });
}

TEST(ProcessSetup, TheStackIsRaisedAsFarAsItIsOfUseAndAllowed) {
    constexpr rlim_t mib = 1024 * 1024;
    const std::pair<rlimit, rlim_t> cases[] = {
        {{8 * mib, 64 * mib}, 24}, {{8 * mib, 16 * mib}, 16}, {{32 * mib, 64 * mib}, 32}};
    for (const auto& c : cases) {
        in_own_process([&c] {
            rlimit limit = c.first;
            if (setrlimit(RLIMIT_STACK, &limit) == 0) {  // unless the machine's own is lower
                prepare_process();
                getrlimit(RLIMIT_STACK, &limit);
                EXPECT_EQ(limit.rlim_cur / mib, c.second);
                EXPECT_EQ(limit.rlim_max, c.first.rlim_max);
            }
        });
    }
}

// The text of dump() names what is blocked, so it also shows what the other operations did.
TEST(SigMask, ChangesItsSetAndPutsBackWhatItFound) {
    const std::string now = "Dumping currently blocked signals:\n";
    const std::string kept = "Signals mask will not be reverted upon destruction.\n";
    const std::string put_back = "Upon destruction signals mask wil be reverted to: \nSIGWINCH\n";
    using Signals = std::vector<int>;
    Kiln::SigMask outer(Signals{SIGWINCH});
    outer.block();
    {
        // SIGSYS is beyond the table.
        Kiln::SigMask mask(Signals{SIGPWR, SIGHUP, SIGSTKFLT, SIGWINCH, SIGSYS});
        EXPECT_EQ(mask.dump(), now + "SIGWINCH\n" + kept);
        mask.unblock();
        EXPECT_EQ(mask.dump(), now + put_back);
        mask.block();
        EXPECT_EQ(mask.dump(), now + "SIGHUP\nSIGSTKFLT\nSIGWINCH\nSIGPWR\n" + put_back);
    }
    {
        const Kiln::SigMask unused(Signals{SIGHUP});
        EXPECT_EQ(unused.dump(), now + "SIGWINCH\n" + kept);
        outer.unblock();  // by somebody else, so it stays
    }
    EXPECT_EQ(Kiln::SigMask(Signals{SIGHUP}).dump(), now + kept);
}

}  // namespace
