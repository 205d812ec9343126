// What becomes of a result that cannot be written.
#include "driver/output.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include "kiln/process_setup.h"
#include "tests/support/in_child.h"

namespace {

TEST(Output, WhatIsLostToAFileSizeLimitIsReported) {
    const std::string path = testing::TempDir() + "too_much." + std::to_string(getpid());
    testing::internal::CaptureStderr();
    const auto write_too_much = [&] {
        prepare_process();
        const rlimit limit = {500, 500};
        setrlimit(RLIMIT_FSIZE, &limit);
        return -write_configuration(path, std::string(800, 'x'));
    };
    EXPECT_EQ(in_child(write_too_much), 1);
    unlink(path.c_str());
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Error: unable to write 300 bystes to the " + path + ": File too large\n");
}

}  // namespace
