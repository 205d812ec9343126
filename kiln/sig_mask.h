// SigMask: blocks and unblocks a set of signals, and puts back the mask that it found when it goes
// away, also while an exception passes.
#pragma once

#include <csignal>
#include <string>
#include <vector>

namespace Kiln {

class SigMask {
public:
    explicit SigMask(const std::vector<int>& signals);
    explicit SigMask(const sigset_t& signals);
    ~SigMask() { revert(); }

    SigMask(const SigMask&) = delete;
    SigMask& operator=(const SigMask&) = delete;

    void block();
    void unblock();

    // Makes the mask found at construction the thread's mask again, if block() or unblock() was
    // ever called; nothing otherwise, so that a change made by someone else stays.
    void revert();

    // A text for a person: the signals from 1 to 30 that are blocked now, and what revert() would
    // do. Part of the interface; nothing in this project calls it.
    std::string dump() const;

    bool changed = false;  // block() or unblock() has been called
    sigset_t set;          // what this object blocks and unblocks
    sigset_t saved;        // the thread's mask at construction
};

}  // namespace Kiln
