// What becomes of a result that cannot be written.
#include "driver/output.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "kiln/process_setup.h"
#include "tests/support/in_child.h"

namespace {

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
