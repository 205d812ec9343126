#include "kiln/limited_caller.h"

#include <unistd.h>

#include "kiln/sig_mask.h"

namespace Kiln {

namespace {

constexpr std::chrono::seconds time_to_die(1);  // what a killed child gets

CallerExec::Intrinsics in_own_group() {
    CallerExec::Intrinsics options;
    options.stop_on_exit = true;  // only a true end of the child counts
    options.own_group = true;
    return options;
}

}  // namespace

LimitedCaller::LimitedCaller(const char* program_name, const std::list<std::string>& arguments,
                             const std::list<std::string>& environment, const RunLimits& limits)
    : CallerExec(program_name, arguments, environment, in_own_group()), limits_(limits) {}

LimitedCaller::~LimitedCaller() {
    if (!collected_) {
        killGroup_();
    }
}

// The child does the same. Whoever comes first, the group is there before it may be killed.
void LimitedCaller::prepareMainLoop_() {
    setpgid(pid, pid);
}

void LimitedCaller::doMainLoop_() {
    SigMask mask(std::vector<int>{SIGCHLD});
    awaitChild_(mask);
    if (collected_) {
        awaitOutputs_(mask);
    } else {
        killGroup_();
        awaitKilled_(mask);
    }
    analyzeExitStatus_();
}

// Until the child has ended by itself or must be killed.
void LimitedCaller::awaitChild_(SigMask& mask) {
    const Clock::time_point end =
        limits_.time ? Clock::now() + *limits_.time : Clock::time_point::max();
    while (!collected_ && how_ == CommandEnd::exited) {
        if (passUntil_(mask, end)) {
            how_ = CommandEnd::stopped;
        } else if (Clock::now() >= end) {
            how_ = CommandEnd::timed_out;
        }
    }
    if (collected_) {
        how_ = CommandEnd::exited;
    }
}

// What the child has written is in the pipes, but their end may never come. Who is told to stop
// before it has read everything does not claim to know what the command wrote.
void LimitedCaller::awaitOutputs_(SigMask& mask) {
    const Clock::time_point end = Clock::now() + limits_.linger;
    while (nfds > 0 && Clock::now() < end) {
        if (passUntil_(mask, end) && nfds > 0) {
            how_ = CommandEnd::stopped;
            return;
        }
    }
}

void LimitedCaller::awaitKilled_(SigMask& mask) {
    const Clock::time_point end = Clock::now() + time_to_die;
    closePipes_();
    while (!collected_ && Clock::now() < end) {
        passLoop_(mask, end - Clock::now());
    }
    left_behind_ = !collected_;
    collected_ = true;  // nobody waits for it any more
}

// The child itself too, should the system have refused it a group.
void LimitedCaller::killGroup_() noexcept {
    if (pid > 0) {
        kill(-pid, SIGKILL);
        kill(pid, SIGKILL);
    }
}

bool LimitedCaller::passUntil_(SigMask& mask, Clock::time_point end) {
    return passLoop_(mask, end - Clock::now(), limits_.stop_fd);
}

}  // namespace Kiln
