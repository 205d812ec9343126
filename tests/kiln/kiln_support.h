// What the tests of kiln share: helper processes, what a process has open, a folder, an alarm.
#pragma once

#include <gtest/gtest.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>

// Whether `body` is true in a forked process.
template <class Body>
bool in_helper_process(const Body& body) {
    const pid_t pid = fork();
    if (pid == 0) {
        _exit(body() ? 0 : 1);
    }
    int status = -1;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    return status == 0;
}

// The numbers, and the one that is open to read them.
inline std::set<std::string> open_descriptors() {
    std::set<std::string> numbers;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        numbers.insert(entry.path().filename());
    }
    return numbers;
}

inline bool has_children() {
    return waitpid(-1, nullptr, WNOHANG) != -1 || errno != ECHILD;
}

// A folder of the test's own, with a blank in its name.
struct Folder {
    Folder() { path = mkdtemp(path.data()); }
    ~Folder() { std::filesystem::remove_all(path); }
    std::string put(const char* name, const std::string& text) const {
        std::ofstream(path + "/" + name) << text;
        return path + "/" + name;
    }
    std::string path = testing::TempDir() + "kiln test.XXXXXX";
};

// Lets `action` happen once, in a signal handler, a moment from now.
inline void soon(void (*action)(int)) {
    struct sigaction handler = {};  // without SA_RESTART
    handler.sa_handler = action;
    sigaction(SIGALRM, &handler, nullptr);
    const itimerval timer = {{0, 0}, {0, 50000}};
    setitimer(ITIMER_REAL, &timer, nullptr);
}
