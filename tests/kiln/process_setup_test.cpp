// What an entry changes about its process, each time tried in a process of its own.
#include "kiln/process_setup.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "tests/support/in_child.h"

namespace {

// A pipe in their place would lose what is meant for them without a word.
TEST(ProcessSetup, ClosedDescriptorsAreFilledWithWhatRefusesItsUse) {
    const auto fill = [] {
        for (int fd = 0; fd < 3; ++fd) {
            close(fd);
        }
        errno = 0;
        prepare_process();
        const bool errno_kept = errno == 0;  // a time span fails on any that is left behind
        char byte = 0;
        const bool refused = read(0, &byte, 1) < 0 && write(1, "", 1) < 0 && write(2, "", 1) < 0;
        const bool filled = dup(0) > 2;
        return errno_kept && refused && filled ? 0 : 1;
    };
    EXPECT_EQ(in_child(fill), 0);
}

TEST(ProcessSetup, LanguageAndStackAreThoseOfTheCommands) {
    const struct {
        rlim_t soft, hard, expected;  // MiB
    } cases[] = {{8, 64, 24}, {8, 16, 16}, {32, 64, 32}, {8, RLIM_INFINITY, 24}};
    for (const auto& c : cases) {
        const auto mebibytes = [](rlim_t n) { return n == RLIM_INFINITY ? n : n << 20; };
        const auto set_up = [&] {
            rlimit limit = {mebibytes(c.soft), mebibytes(c.hard)};
            if (setrlimit(RLIMIT_STACK, &limit) != 0) {
                return 99;  // the machine's own limit is lower
            }
            setenv("LC_ALL", "de_DE.UTF-8", 1);
            prepare_process();
            getrlimit(RLIMIT_STACK, &limit);
            const bool hard_kept = limit.rlim_max == mebibytes(c.hard);
            const bool english = std::strcmp(getenv("LC_ALL"), "C") == 0;
            return hard_kept && english ? static_cast<int>(limit.rlim_cur >> 20) : 1;
        };
        const int result = in_child(set_up);
        EXPECT_TRUE(result == static_cast<int>(c.expected) || result == 99) << result;
    }
}

}  // namespace
