// What the entry changes about its process, and what becomes of a result that cannot be written.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "driver/output.h"
#include "driver/process_setup.h"
#include "tests/driver/in_child.h"

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

// Writes 800 bytes where a file may have 500.
int write_too_much(const std::string& path, bool to_standard_output) {
    prepare_process();
    const rlimit limit = {500, 500};
    setrlimit(RLIMIT_FSIZE, &limit);
    if (to_standard_output) {
        dup2(open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), STDOUT_FILENO);
    }
    return -write_configuration(to_standard_output ? "" : path, std::string(800, 'x'));
}

TEST(Output, WhatIsLostToAFileSizeLimitIsReported) {
    const std::string path = testing::TempDir() + "too_much." + std::to_string(getpid());
    testing::internal::CaptureStderr();
    EXPECT_EQ(in_child([&] { return write_too_much(path, false); }), 1);
    EXPECT_EQ(in_child([&] { return write_too_much(path, true); }), 0);
    unlink(path.c_str());
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Error: unable to write 300 bystes to the " + path +
                  ": File too large\n"
                  "Error: unable to write to standard output: File too large\n");
}

}  // namespace
