#include "bench/idle_processes.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "bench/bench_support.h"

namespace Bench {

namespace {

std::string status_path(pid_t pid) {
    return "/proc/" + std::to_string(pid) + "/status";
}

}  // namespace

IdleProcesses::IdleProcesses(int more_descriptors)
    : more_descriptors_(more_descriptors), paths_{status_path(getpid())} {}

void IdleProcesses::grow_to(std::size_t count) {
    while (paths_.size() < count)
        paths_.push_back(status_path(start_one()));
}

// Returns when the process stands still, so that it costs no measurement anything.
pid_t IdleProcesses::start_one() const {
    const pid_t pid = fork();
    if (pid < 0)
        give_up("fork");
    if (pid == 0) {
        for (int i = 0; i < more_descriptors_; ++i) {
            if (open("/dev/null", O_RDONLY) < 0)
                give_up("open");
        }
        raise(SIGSTOP);
        _exit(0);
    }
    if (waitpid(pid, nullptr, WUNTRACED) != pid)
        give_up("waitpid");
    return pid;
}

int in_private(const std::function<int()>& measure) {
    if (unshare(CLONE_NEWPID | CLONE_NEWNS) != 0)
        give_up("unshare");
    const pid_t pid = fork();
    if (pid < 0)
        give_up("fork");
    if (pid == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            mount("proc", "/proc", "proc", 0, nullptr) != 0)
            give_up("mount");
        _exit(measure());
    }
    int status = 0;
    waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 2;
}

}  // namespace Bench
