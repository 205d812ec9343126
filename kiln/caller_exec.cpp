#include "kiln/caller_exec.h"

#include <err.h>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <ctime>
#include <exception>
#include <utility>

#include "kiln/close_descriptors.h"
#include "kiln/error.h"
#include "kiln/files.h"
#include "kiln/search_path.h"
#include "kiln/sig_mask.h"

namespace Kiln {

namespace {

constexpr time_t poll_timeout_seconds = 1;
constexpr int core_dump_bit = 0x80;
constexpr int unknown_wait_status = 0x7f;  // neither an exit nor a signal

void close_end(int& fd) noexcept {
    if (fd >= 0) {
        close(fd);
    }
    fd = -1;
}

pid_t wait_for(pid_t pid, int* status, int flags) {
    pid_t result = -1;
    do {
        result = waitpid(pid, status, flags);
    } while (result < 0 && errno == EINTR);
    return result;
}

// Ends the child with a message that carries the system's error text. Not with the C library's
// err(): its exit() would run the parent's exit handlers and write the parent's unflushed output
// once more.
[[noreturn]] void fail_kid(const char* format, ...) __attribute__((format(printf, 1, 2)));

void fail_kid(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    vwarn(format, arguments);
    va_end(arguments);
    _exit(1);
}

void put_in_place(int fd, int wanted_fd) {
    if (fd == wanted_fd) {
        fcntl(fd, F_SETFD, 0);  // the copy made below loses the close-on-exec flag by itself
        return;
    }
    while (dup2(fd, wanted_fd) < 0) {
        if (errno != EINTR) {
            fail_kid("Can't make dup2(%d, %d): %s", fd, wanted_fd, std::strerror(errno));
        }
    }
    close(fd);
}

std::vector<char*> pointers_to(std::list<std::string>& strings) {
    std::vector<char*> pointers;
    for (std::string& s : strings) {
        pointers.push_back(s.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace

volatile std::sig_atomic_t CallerExec::sigchld_received = 0;

void CallerExec::handle_CHLD(int /*signal_number*/) {
    sigchld_received = 1;
}

CallerExec::CallerExec(const char* program_name, const std::list<std::string>& arguments,
                       const std::list<std::string>& environment, Intrinsics options)
    : CallerBase(program_name, arguments, environment), intrinsics(std::move(options)) {}

CallerExec::~CallerExec() {
    closePipes_();
    if (pid > 0 && !collected_) {
        wait_for(pid, nullptr, 0);
    }
}

int CallerExec::enter(std::vector<Connector*>& connector_list) {
    for (unsigned i = 0; i < fd_count; ++i) {
        connectors[i] = connector_list[i];
    }
    openPipes_();
    if (running) {
        installDispositions_();
    }
    const pid_t child = fork();
    if (child < 0) {
        throw Error(Error::CallerGenericError, "Fork returned: %s", std::strerror(errno));
    }
    if (child == 0) {
        doKid_();
    }
    pid = child;
    doDad_();
    return CallerBase::enter(connector_list);
}

void CallerExec::leave() {
    CallerBase::leave();
}

void CallerExec::openPipes_() {
    for (unsigned i = 0; i < fd_count; ++i) {
        if (connectors[i] == nullptr) {
            continue;
        }
        if (running) {
            connectors[i]->pfd = &pollfds[nfds];
            slot_connectors[nfds] = connectors[i];
            ++nfds;
        }
        if (pipe2(pipes[i], O_CLOEXEC) != 0) {
            throw Error(Error::CallerGenericError, "Can't create pipe for callee's %u fd: %s", i,
                        std::strerror(errno));
        }
    }
    std::swap(pipes[0][parent_end], pipes[0][child_end]);  // the one pipe that the parent writes to
}

void CallerExec::installDispositions_() {
    struct sigaction action = {};
    sigemptyset(&action.sa_mask);
    action.sa_handler = SIG_IGN;
    sigaction(SIGPIPE, &action, &old_sigpipe);
    sigchld_received = 0;  // whatever an earlier call left behind says nothing about this child
    action.sa_handler = handle_CHLD;
    sigaction(SIGCHLD, &action, &old_sigchld);
}

void CallerExec::restoreDispositions_() const {
    sigaction(SIGPIPE, &old_sigpipe, nullptr);
    sigaction(SIGCHLD, &old_sigchld, nullptr);
}

void CallerExec::doDad_() {
    for (unsigned i = 0; i < fd_count; ++i) {
        if (connectors[i] == nullptr) {
            continue;
        }
        close_end(pipes[i][child_end]);
        const int fd = pipes[i][parent_end];
        if (connectors[i]->pfd != nullptr) {  // null when no call() is running
            connectors[i]->pfd->fd = fd;
            connectors[i]->pfd->events = i == STDIN_FILENO ? POLLOUT : POLLIN;
        }
        if (setFDNonblock(fd) == -1) {
            throw Error(Error::CallerGenericError,
                        "Can't set O_NONBLOCK for fd %d (connector #%u): %s", fd, i,
                        std::strerror(errno));
        }
    }
}

void CallerExec::doKid_() noexcept {
    try {
        connectKid_();
        restoreDispositions_();
        if (!intrinsics.work_dir.empty() && chdir(intrinsics.work_dir.c_str()) != 0) {
            fail_kid("Can't chdir to %s: %s", intrinsics.work_dir.c_str(), std::strerror(errno));
        }
        execKid_();
    } catch (const std::exception& exception) {
        warnx("Can't execute %s: %s", program.c_str(), exception.what());
    }
    _exit(1);
}

// The parent may have been started without some of the descriptors 0 to 2, so the pipes may have
// taken these numbers. Rising order keeps the ends apart: a pipe never holds a number that an
// earlier one needs.
void CallerExec::connectKid_() {
    for (unsigned i = 0; i < fd_count; ++i) {
        if (connectors[i] == nullptr) {
            continue;
        }
        close_end(pipes[i][parent_end]);
        put_in_place(pipes[i][child_end], static_cast<int>(i));
    }
    for (unsigned i = 0; i < fd_count; ++i) {
        if (connectors[i] == nullptr) {
            close(static_cast<int>(i));
        }
    }
    close_descriptors_from(fd_count);
}

void CallerExec::execKid_() {
    const std::string path = get_full_name(program.c_str(), env);
    std::vector<char*> argv = pointers_to(args);
    argv.insert(argv.begin(), program.data());
    const std::vector<char*> envp = pointers_to(env);
    execve(path.c_str(), argv.data(), envp.data());
    fail_kid("Can't execute %s", program.c_str());
}

void CallerExec::doMainLoop_() {
    SigMask mask(std::vector<int>{SIGCHLD});
    while (!reaped || (!intrinsics.stop_on_exit && nfds > 0)) {
        mask.block();
        const int ready = pollEntries_(mask);
        if (sigchld_received != 0 || (ask_again_ && ready <= 0)) {
            collectChild_();
        }
        // Also lets in a SIGCHLD that the wait left pending because an entry was ready at once.
        mask.unblock();
        if (ready > 0) {
            serveEntries_();
        }
    }
    waitForChild_();
    analyzeExitStatus_();
}

// Waits until an entry is ready or a child ends. The wait itself lifts the block, so a child that
// ends just before it begins still ends it; the time-out is never what finds an exit.
int CallerExec::pollEntries_(const SigMask& mask) {
    sigset_t open_mask = mask.saved;
    sigdelset(&open_mask, SIGCHLD);
    const timespec timeout = {sigchld_received != 0 ? 0 : poll_timeout_seconds, 0};
    const int ready = ppoll(pollfds, nfds, &timeout, &open_mask);
    if (ready < 0 && errno != EINTR) {
        throw Error(Error::CallerGenericError, "Error calling poll(): %s", std::strerror(errno));
    }
    return ready;
}

void CallerExec::collectChild_() {
    sigchld_received = 0;
    if (collected_) {
        return;
    }
    int answer = 0;
    const pid_t result = wait_for(pid, &answer, WNOHANG);
    if (result < 0 && errno != ECHILD) {
        throw Error(Error::CallerGenericError, "waitpid returned -1: %s", std::strerror(errno));
    }
    if (result < 0) {
        missChild_();
        return;
    }
    // Also when the child still runs (0); its true end is then awaited after the loop.
    reaped = true;
    if (result > 0) {
        wait_status = answer;
        collected_ = true;
    }
}

// The kernel says that there is no such child. Once may be a mistake, so it is asked again after
// the next wait that finds no entry ready, be it interrupted. If it insists when nothing is left to
// read, somebody else has taken the child's status.
void CallerExec::missChild_() {
    if (ask_again_ && nfds == 0) {
        wait_status = unknown_wait_status;
        reaped = true;
        collected_ = true;
    }
    ask_again_ = true;
}

void CallerExec::serveEntries_() {
    for (unsigned i = 0; i < nfds; ++i) {
        if (pollfds[i].revents != 0 && slot_connectors[i]->process() < 1) {
            dropEntry_(i);
        }
    }
}

// The last entry moves into the free place, where it is served in the next pass.
void CallerExec::dropEntry_(unsigned index) {
    for (auto& ends : pipes) {
        if (ends[parent_end] == pollfds[index].fd) {
            close_end(ends[parent_end]);
        }
    }
    const unsigned last = --nfds;
    if (index != last) {
        pollfds[index] = pollfds[last];
        slot_connectors[index] = slot_connectors[last];
        slot_connectors[index]->pfd = &pollfds[index];
    }
    pollfds[last] = {-1, 0, 0};
    slot_connectors[last] = nullptr;
}

// A SIGCHLD that somebody sent, or a child that was merely stopped, ends the loop early; the true
// status is fetched here. The pipes go first, so that a child which waits for us to read ends too.
void CallerExec::waitForChild_() {
    if (collected_) {
        return;
    }
    closePipes_();
    pid_t result = wait_for(pid, &wait_status, 0);
    if (result < 0 && errno == ECHILD) {
        result = wait_for(pid, &wait_status, 0);
    }
    if (result < 0 && errno != ECHILD) {
        throw Error(Error::CallerGenericError, "waitpid returned -1: %s", std::strerror(errno));
    }
    if (result < 0) {
        wait_status = unknown_wait_status;
    }
    collected_ = true;
}

void CallerExec::closePipes_() noexcept {
    nfds = 0;
    for (auto& ends : pipes) {
        close_end(ends[parent_end]);
        close_end(ends[child_end]);
    }
}

void CallerExec::finishMainLoop_() {
    restoreDispositions_();
}

void CallerExec::analyzeExitStatus_() {
    exited_normally = WIFEXITED(wait_status);
    status = exited_normally ? WEXITSTATUS(wait_status) : -1;
    term_signal = WIFSIGNALED(wait_status) ? WTERMSIG(wait_status) : 0;
}

std::string CallerExec::getCoreDumpName() const {
    if (term_signal == 0 || (wait_status & core_dump_bit) == 0) {
        return {};
    }
    std::string uses_pid;
    if (get_file("/proc/sys/kernel/core_uses_pid", uses_pid) != 0 || uses_pid.empty()) {
        uses_pid = "0";
    }
    if (uses_pid[0] == '0') {
        return "core";
    }
    return "core." + std::to_string(static_cast<unsigned>(pid));
}

}  // namespace Kiln
