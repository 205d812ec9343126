// What the tests of kiln share: helper processes and what a process has open.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
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
