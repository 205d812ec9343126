// A made-up host for tests of steps that read fixed paths: a child process with its own mount and
// network namespaces, in which /etc, /tmp and /var/log are empty and the test puts its own files.
#pragma once

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

namespace private_host {

inline void write_file(const std::string& path, const std::string& text) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << text;
}

inline bool enter() {
    if (unshare(CLONE_NEWNS | CLONE_NEWNET) != 0 ||
        mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
        return false;
    }
    for (const char* path : {"/etc", "/tmp", "/var/log"}) {
        if (mount("none", path, "tmpfs", 0, nullptr) != 0) {
            return false;
        }
    }
    return true;
}

// Runs `body` on such a host; its failed expectations fail the test. Skips the test where
// namespaces are refused, or where the body skips for want of something else. Nothing may follow it
// in a test.
inline void run(const std::function<void()>& body) {
    constexpr int refused = 77;
    std::fflush(nullptr);
    const pid_t child = fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        int result = refused;
        if (enter()) {
            [&]() noexcept { body(); }();  // an exception must not reach the runner's copy
            result = testing::Test::HasFailure() ? 1 : testing::Test::IsSkipped() ? refused : 0;
        }
        std::fflush(nullptr);
        _exit(result);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status)) << "wait status " << status;
    if (WEXITSTATUS(status) == refused) {
        GTEST_SKIP() << "the machine refuses a host of our own";
    }
    EXPECT_EQ(WEXITSTATUS(status), 0) << "see the expectations above";
}

}  // namespace private_host
