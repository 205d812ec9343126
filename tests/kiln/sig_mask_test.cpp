#include "kiln/sig_mask.h"

#include <gtest/gtest.h>

namespace {

using Signals = std::vector<int>;

// The text of dump() names what is blocked, so it also shows what the other operations did.
TEST(SigMask, ChangesItsSetAndPutsBackWhatItFound) {
    const std::string now = "Dumping currently blocked signals:\n";
    const std::string kept = "Signals mask will not be reverted upon destruction.\n";
    const std::string put_back = "Upon destruction signals mask wil be reverted to: \nSIGWINCH\n";
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
