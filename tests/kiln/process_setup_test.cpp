// What the entry changes about its process.
#include "kiln/process_setup.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cerrno>
#include <cstdlib>

namespace {

// The time spans of the command line fail on any error number that is left behind.
TEST(ProcessSetup, SetsLocaleAndStackAndLeavesErrnoAlone) {
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_STACK, &limit), 0);
    setenv("LC_ALL", "de_DE.UTF-8", 1);
    errno = 0;
    prepare_process();
    EXPECT_EQ(errno, 0);
    EXPECT_STREQ(getenv("LC_ALL"), "C");
    rlimit after{};
    ASSERT_EQ(getrlimit(RLIMIT_STACK, &after), 0);
    EXPECT_EQ(after.rlim_cur, limit.rlim_max);
    setrlimit(RLIMIT_STACK, &limit);
}

}  // namespace
