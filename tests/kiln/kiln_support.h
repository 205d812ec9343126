// What the tests of kiln share: pipes, helper processes and a storm of signals.
#pragma once

#include <dirent.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <set>
#include <string>

#include "kiln/files.h"
#include "kiln/numbers.h"

// What `body` returns in a forked process; -1 when it did not get there.
template <class Body>
int in_helper_process(const Body& body) {
    const pid_t pid = fork();
    if (pid == 0) {
        _exit(body());
    }
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

inline std::set<int> open_descriptors() {
    std::set<int> fds;
    DIR* directory = opendir("/proc/self/fd");
    while (const dirent* entry = readdir(directory)) {
        if (entry->d_name[0] != '.') {
            fds.insert(Kiln::leading_int(entry->d_name));
        }
    }
    fds.erase(dirfd(directory));
    closedir(directory);
    return fds;
}

inline bool has_children() {
    return waitpid(-1, nullptr, WNOHANG) != -1 || errno != ECHILD;
}

struct Pipe {
    explicit Pipe(const std::string& text = "") {
        if (pipe(ends) != 0) {
            std::abort();
        }
        Kiln::write_all(ends[1], text.data(), text.size());
    }
    ~Pipe() {
        close(ends[0]);
        close(ends[1]);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int ends[2];  // the reader's and the writer's
};

// A stream of SIGALRM and SIGCHLD at this process, which does no more than interrupt it.
struct SignalStorm {
    SignalStorm() {
        struct sigaction action = {};
        action.sa_handler = [](int) { kill(getpid(), SIGCHLD); };
        sigaction(SIGALRM, &action, &old_alarm);
        const itimerval timer = {{0, 200}, {0, 200}};
        setitimer(ITIMER_REAL, &timer, nullptr);
    }
    ~SignalStorm() {
        const itimerval none = {};
        setitimer(ITIMER_REAL, &none, nullptr);
        sigaction(SIGALRM, &old_alarm, nullptr);
    }
    SignalStorm(const SignalStorm&) = delete;
    SignalStorm& operator=(const SignalStorm&) = delete;

    struct sigaction old_alarm = {};
};
