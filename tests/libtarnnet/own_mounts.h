// Runs the body of a test in a child process with mounts of its own, where /etc and /var/log are
// empty: what the library reads and logs there is the test's alone. Needs root.
#pragma once

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

namespace own_mounts {

constexpr int kNoPrivilege = 77;

inline bool enter() {
    return unshare(CLONE_NEWNS) == 0 &&
           mount("none", "/", "none", MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount("none", "/etc", "tmpfs", 0, nullptr) == 0 &&
           mount("none", "/var/log", "tmpfs", 0, nullptr) == 0;
}

template <class Body>
void run(Body body) {
    std::fflush(nullptr);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        if (!enter()) {
            _exit(kNoPrivilege);
        }
        body();
        std::fflush(nullptr);
        exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    if (WIFEXITED(status) && WEXITSTATUS(status) == kNoPrivilege) {
        GTEST_SKIP() << "mounts of its own need root";
    }
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "wait status " << status;
}

inline void write_file(const std::string& path, const std::string& text) {
    for (size_t slash = path.find('/', 1); slash != std::string::npos;
         slash = path.find('/', slash + 1)) {
        mkdir(path.substr(0, slash).c_str(), 0755);
    }
    std::ofstream(path, std::ios::binary) << text;
}

inline std::string read_file(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

// The messages of the library's log, each followed by a newline, without their stamps.
inline std::string logged_messages() {
    std::istringstream lines(read_file("/var/log/tarnnetcfg.log"));
    std::string messages;
    for (std::string line; std::getline(lines, line);) {
        messages += line.substr(line.rfind('\t') + 1) + "\n";
    }
    return messages;
}

}  // namespace own_mounts
