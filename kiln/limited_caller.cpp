#include "kiln/limited_caller.h"

#include "kiln/sig_mask.h"

namespace Kiln {

namespace {

constexpr std::chrono::seconds time_to_die(1);  // what a killed child gets
constexpr int passes_for_full_pipes = 64;       // one reads a sixteenth of what a pipe holds

CallerExec::Intrinsics in_own_group() {
    CallerExec::Intrinsics options;
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

// What the child has written is in the pipes and is read however late it is, but their end may
// never come. Who is told to stop before that end does not claim to know what the command wrote.
void LimitedCaller::awaitOutputs_(SigMask& mask) {
    const Clock::time_point end = Clock::now() + limits_.linger;
    int passes_left = passes_for_full_pipes;
    while (nfds > 0 && (Clock::now() < end || passes_left-- > 0)) {
        if (passUntil_(mask, end) && nfds > 0) {
            how_ = CommandEnd::stopped;
            return;
        }
    }
}

void LimitedCaller::awaitKilled_(SigMask& mask) {
    const Clock::time_point end = Clock::now() + time_to_die;
    while (!collected_ && Clock::now() < end) {
        passLoop_(mask, end - Clock::now());
    }
    left_behind_ = !collected_;
    collected_ = true;  // nobody waits for it any more
}

// The child itself too, for it may not have come to making its group.
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
