// What the tests of kiln share: pipes, helper processes and a storm of signals.
#pragma once

#include <dirent.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <set>
#include <string>

#include "kiln/files.h"
#include "kiln/numbers.h"

// The exit status of a forked process that returns what `body` returns; -1 when it did not get
// there.
template <class Body>
int in_helper_process(const Body& body) {
    const pid_t pid = fork();
    if (pid == 0)
        _exit(body());
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

inline std::set<int> open_descriptors() {
    std::set<int> fds;
    DIR* directory = opendir("/proc/self/fd");
    while (const dirent* entry = readdir(directory)) {
        if (entry->d_name[0] != '.')
            fds.insert(Kiln::leading_int(entry->d_name));
    }
    fds.erase(dirfd(directory));
    closedir(directory);
    return fds;
}

inline bool has_children() {
    return waitpid(-1, nullptr, WNOHANG) != -1 || errno != ECHILD;
}

class Pipe {
public:
    explicit Pipe(const std::string& text = "") {
        if (pipe(ends_) != 0)
            std::abort();
        Kiln::write_all(ends_[1], text.data(), text.size());
    }
    ~Pipe() {
        close_end(ends_[0]);
        close_end(ends_[1]);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int reader() const { return ends_[0]; }
    int writer() const { return ends_[1]; }
    void close_reader() { close_end(ends_[0]); }
    void close_writer() { close_end(ends_[1]); }

private:
    static void close_end(int& fd) {
        if (fd >= 0)
            close(fd);
        fd = -1;
    }

    int ends_[2] = {-1, -1};
};

// A stream of SIGALRM and SIGCHLD at this process, which does no more than interrupt it.
class SignalStorm {
public:
    SignalStorm() {
        struct sigaction action = {};
        action.sa_handler = [](int) {};
        sigaction(SIGALRM, &action, &old_alarm_);
        sigaction(SIGCHLD, &action, &old_child_);
        const pid_t target = getpid();
        sender_ = fork();
        while (sender_ == 0 && kill(target, SIGALRM) == 0 && kill(target, SIGCHLD) == 0)
            usleep(100);
        if (sender_ == 0)
            _exit(0);
    }
    ~SignalStorm() {
        kill(sender_, SIGKILL);
        while (waitpid(sender_, nullptr, 0) < 0 && errno == EINTR) {
        }
        sigaction(SIGALRM, &old_alarm_, nullptr);
        sigaction(SIGCHLD, &old_child_, nullptr);
    }
    SignalStorm(const SignalStorm&) = delete;
    SignalStorm& operator=(const SignalStorm&) = delete;

private:
    pid_t sender_ = -1;
    struct sigaction old_alarm_ = {};
    struct sigaction old_child_ = {};
};
