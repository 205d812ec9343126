#include "kiln/caller_exec.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <utility>

#include "kiln/error.h"
#include "kiln/files.h"
#include "kiln/sig_mask.h"

namespace Kiln {

namespace {

constexpr timespec poll_timeout = {1, 0};
constexpr timespec no_wait = {0, 0};
constexpr int core_dump_bit = 0x80;
constexpr int unknown_wait_status = 0x7f;  // neither an exit nor a signal

void replace_disposition(int signal_number, void (*handler)(int), struct sigaction& old) {
    struct sigaction action = {};  // without SA_RESTART: the signal is to end a wait
    sigemptyset(&action.sa_mask);
    action.sa_handler = handler;
    // Without the handler nothing would ever tell of the child's end.
    if (sigaction(signal_number, &action, &old) != 0) {
        throw Error(Error::CallerGenericError, "Can't handle signal %d: %s", signal_number,
                    std::strerror(errno));
    }
}

}  // namespace

volatile std::sig_atomic_t CallerExec::sigchld_received = 0;

void CallerExec::handle_CHLD(int /*signal_number*/) {
    sigchld_received = 1;
}

CallerExec::CallerExec(const char* program_name, const std::list<std::string>& arguments,
                       const std::list<std::string>& environment, Intrinsics options)
    : CallerBase(program_name, arguments, environment), intrinsics(std::move(options)) {}

// The pipes go first, so that a child which waits for us to read or write ends.
CallerExec::~CallerExec() {
    closePipes_();
    while (pid > 0 && !collected_ && askForChild_(0)) {
    }
}

int CallerExec::enter(std::vector<Connector*>& connector_list) {
    for (unsigned i = 0; i < fd_count; ++i) {
        connectors[i] = connector_list[i];
    }
    openPipes_();
    if (running) {
        installDispositions_();  // before the fork: a child may end before fork() returns
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
        if (running) {  // else nobody polls
            connectors[i]->pfd = &pollfds[nfds];
            slot_connectors[nfds] = connectors[i];
            ++nfds;
        }
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0) {
            throw Error(Error::CallerGenericError, "Can't create pipe for callee's %u fd: %s", i,
                        std::strerror(errno));
        }
        // The parent writes to the child's standard input and reads from the two others.
        const bool parent_writes = i == STDIN_FILENO;
        pipes[i][parent_end].reset(ends[parent_writes ? 1 : 0]);
        pipes[i][child_end].reset(ends[parent_writes ? 0 : 1]);
    }
}

void CallerExec::installDispositions_() {
    replace_disposition(SIGPIPE, SIG_IGN, old_sigpipe);
    sigchld_received = 0;  // whatever an earlier call left behind says nothing about this child
    replace_disposition(SIGCHLD, handle_CHLD, old_sigchld);
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
        // Held on, it would keep the pipe's other end from ever coming to the end of the data.
        pipes[i][child_end].reset();
        const int fd = pipes[i][parent_end].get();
        if (connectors[i]->pfd != nullptr) {  // null when no call() is running
            connectors[i]->pfd->fd = fd;
            connectors[i]->pfd->events = i == STDIN_FILENO ? POLLOUT : POLLIN;
        }
        // A connector that finds less than it was told of must not hold up the others.
        if (setFDNonblock(fd) == -1) {
            throw Error(Error::CallerGenericError,
                        "Can't set O_NONBLOCK for fd %d (connector #%u): %s", fd, i,
                        std::strerror(errno));
        }
    }
}

void CallerExec::doMainLoop_() {
    SigMask mask(std::vector<int>{SIGCHLD});
    while (!reaped || (!intrinsics.stop_on_exit && nfds > 0)) {
        passLoop_(mask);
    }
    // A child that lives on must not wait for a reader while we wait for its end.
    closePipes_();
    while (!collected_) {
        collectChild_(0);
    }
    analyzeExitStatus_();
}

// One wait, and what it brought.
void CallerExec::passLoop_(SigMask& mask) {
    mask.block();
    const int ready = pollEntries_(mask);
    if (sigchld_received != 0 || (missed_ && ready <= 0)) {
        sigchld_received = 0;
        collectChild_(WNOHANG);
    }
    // Also lets in a SIGCHLD that the wait left pending because an entry was ready at once.
    mask.unblock();
    if (ready > 0) {
        serveEntries_();
    }
}

// Waits until an entry is ready or a child ends. The wait itself lifts the block, so a child that
// ends just before it begins still ends it; the time-out is never what finds an exit.
int CallerExec::pollEntries_(const SigMask& mask) {
    sigset_t open_mask = mask.saved;
    sigdelset(&open_mask, SIGCHLD);
    const timespec timeout = sigchld_received != 0 ? no_wait : poll_timeout;
    const int ready = ppoll(pollfds, nfds, &timeout, &open_mask);
    if (ready < 0 && errno != EINTR) {
        throw Error(Error::CallerGenericError, "Error calling poll(): %s", std::strerror(errno));
    }
    return ready;
}

// A pipe that others have closed is ready as well (POLLHUP without POLLIN): its connector finds the
// end.
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
        if (ends[parent_end].get() == pollfds[index].fd) {
            ends[parent_end].reset();
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

// Asks the kernel for the child's end. Returns false, with errno set, when the kernel cannot tell.
//
// A child that the kernel does not know: the first such answer is ignored, for it may be a mistake,
// and the child is asked for again as soon as a wait finds nothing to read. The second one means
// that somebody else has taken the child's status. The child is gone then and counts as ended
// neither by an exit nor by a signal; what its pipes hold is read as ever.
//
// A child that lives on (a SIGCHLD that somebody sent, or a stop seen because the child is traced)
// counts as reaped all the same, as required: the loop goes on for the pipes alone, and with
// stop_on_exit it ends there and then. The true end is awaited behind the loop.
bool CallerExec::askForChild_(int wait_flags) noexcept {
    int answer = unknown_wait_status;
    const auto result = TEMP_FAILURE_RETRY(waitpid(pid, &answer, wait_flags));
    if (result < 0 && errno != ECHILD) {
        return false;
    }
    const bool missing = result < 0;
    const bool ended = result > 0 && (WIFEXITED(answer) || WIFSIGNALED(answer));
    if (ended || (missing && missed_)) {
        wait_status = answer;
        collected_ = true;
    }
    missed_ = missed_ || missing;
    reaped = reaped || collected_ || !missing;
    return true;
}

void CallerExec::collectChild_(int wait_flags) {
    if (!collected_ && !askForChild_(wait_flags)) {
        throw Error(Error::CallerGenericError, "waitpid returned -1: %s", std::strerror(errno));
    }
}

void CallerExec::closePipes_() noexcept {
    nfds = 0;
    for (auto& ends : pipes) {
        ends[parent_end].reset();
        ends[child_end].reset();
    }
}

void CallerExec::finishMainLoop_() {
    restoreDispositions_();
}

// A child whose status nobody knows (see above) has neither exited nor been killed.
void CallerExec::analyzeExitStatus_() {
    exited_normally = WIFEXITED(wait_status);
    status = exited_normally ? WEXITSTATUS(wait_status) : -1;
    term_signal = WIFSIGNALED(wait_status) ? WTERMSIG(wait_status) : 0;
}

// The kernel's file reads "0" or "1"; only its first character counts.
std::string CallerExec::getCoreDumpName() const {
    if (term_signal == 0 || (wait_status & core_dump_bit) == 0) {
        return {};
    }
    std::string uses_pid;
    if (get_file(intrinsics.paths.core_uses_pid, uses_pid) != 0 || uses_pid.empty()) {
        uses_pid = "0";
    }
    if (uses_pid[0] == '0') {
        return "core";
    }
    return "core." + std::to_string(static_cast<unsigned>(pid));
}

}  // namespace Kiln
