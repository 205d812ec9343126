#include "kiln/sig_mask.h"

namespace Kiln {

namespace {

// The signals that dump() knows, by their numbers.
constexpr const char* signal_names[] = {
    "NONE",      "SIGHUP",  "SIGINT",    "SIGQUIT", "SIGILL",   "SIGTRAP", "SIGABRT", "SIGBUS",
    "SIGFPE",    "SIGKILL", "SIGUSR1",   "SIGSEGV", "SIGUSR2",  "SIGPIPE", "SIGALRM", "SIGTERM",
    "SIGSTKFLT", "SIGCHLD", "SIGCONT",   "SIGSTOP", "SIGTSTP",  "SIGTTIN", "SIGTTOU", "SIGURG",
    "SIGXCPU",   "SIGXFSZ", "SIGVTALRM", "SIGPROF", "SIGWINCH", "SIGIO",   "SIGPWR"};
constexpr int last_named_signal = 30;

// The call fails for a wrong `how` alone; that it is repeated is part of the contract.
void change_mask(int how, const sigset_t& change, sigset_t* previous) {
    while (sigprocmask(how, &change, previous) != 0) {
    }
}

sigset_t set_of(const std::vector<int>& signals) {
    sigset_t set;
    sigemptyset(&set);
    for (const int number : signals) {
        sigaddset(&set, number);
    }
    return set;
}

// Asked for by blocking nothing.
sigset_t current_mask() {
    const sigset_t nothing = set_of({});
    sigset_t mask;
    change_mask(SIG_BLOCK, nothing, &mask);
    return mask;
}

std::string names_in(const sigset_t& set) {
    std::string names;
    for (int number = 1; number <= last_named_signal; ++number) {
        if (sigismember(&set, number) == 1) {
            names.append(signal_names[number]).append("\n");
        }
    }
    return names;
}

}  // namespace

SigMask::SigMask(const std::vector<int>& signals) : SigMask(set_of(signals)) {}

SigMask::SigMask(const sigset_t& signals) : set(signals), saved(current_mask()) {}

void SigMask::block() {
    change_mask(SIG_BLOCK, set, nullptr);
    changed = true;
}

void SigMask::unblock() {
    change_mask(SIG_UNBLOCK, set, nullptr);
    changed = true;
}

void SigMask::revert() {
    if (changed) {
        change_mask(SIG_SETMASK, saved, nullptr);
    }
}

std::string SigMask::dump() const {
    std::string text = "Dumping currently blocked signals:\n" + names_in(current_mask());
    if (!changed) {
        return text + "Signals mask will not be reverted upon destruction.\n";
    }
    // The spelling and the trailing blank are kept for those who compare such texts.
    return text + "Upon destruction signals mask wil be reverted to: \n" + names_in(saved);
}

}  // namespace Kiln
