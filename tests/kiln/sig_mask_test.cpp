#include "kiln/sig_mask.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

bool is_blocked(int number) {
    sigset_t mask;
    sigprocmask(SIG_BLOCK, nullptr, &mask);
    return sigismember(&mask, number) == 1;
}

void change(int how, int number) {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, number);
    sigprocmask(how, &set, nullptr);
}

using Signals = std::vector<int>;

TEST(SigMask, BlocksItsSetAndPutsBackWhatItFound) {
    change(SIG_BLOCK, SIGUSR2);
    try {
        Kiln::SigMask mask(Signals{SIGUSR1, SIGUSR2});
        EXPECT_FALSE(is_blocked(SIGUSR1));
        mask.block();
        EXPECT_TRUE(is_blocked(SIGUSR1));
        mask.unblock();
        EXPECT_FALSE(is_blocked(SIGUSR1));
        EXPECT_FALSE(is_blocked(SIGUSR2));
        mask.block();
        throw std::runtime_error("on the way out");
    } catch (const std::runtime_error&) {
    }
    EXPECT_FALSE(is_blocked(SIGUSR1));
    EXPECT_TRUE(is_blocked(SIGUSR2));
    {
        const Kiln::SigMask unused(Signals{SIGUSR1});
        change(SIG_UNBLOCK, SIGUSR2);  // by somebody else, so it stays
    }
    EXPECT_FALSE(is_blocked(SIGUSR2));
}

TEST(SigMask, DumpNamesTheBlockedSignals) {
    sigset_t set;
    sigemptyset(&set);
    for (const int number : {SIGPWR, SIGHUP, SIGSTKFLT, SIGSYS, SIGRTMIN})
        sigaddset(&set, number);  // the last two are beyond the table
    change(SIG_BLOCK, SIGWINCH);
    {
        Kiln::SigMask mask(set);
        EXPECT_EQ(mask.dump(),
                  "Dumping currently blocked signals:\nSIGWINCH\n"
                  "Signals mask will not be reverted upon destruction.\n");
        mask.block();
        EXPECT_EQ(mask.dump(),
                  "Dumping currently blocked signals:\nSIGHUP\nSIGSTKFLT\nSIGWINCH\nSIGPWR\n"
                  "Upon destruction signals mask wil be reverted to: \nSIGWINCH\n");
    }
    change(SIG_UNBLOCK, SIGWINCH);
    EXPECT_EQ(Kiln::SigMask(set).dump(),
              "Dumping currently blocked signals:\n"
              "Signals mask will not be reverted upon destruction.\n");
}

}  // namespace
