// The signals that ask a recorder to end, noticed even while it sleeps.
#pragma once

#include <chrono>
#include <csignal>

#include "kiln/owners.h"

// Catches SIGINT, SIGTERM and SIGHUP as long as it lives; one that was ignored stays so (nohup).
// One object at a time.
class StopSignals {
public:
    StopSignals();
    ~StopSignals();

    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

    // How many have come; those that follow a counted one within a second are one with it: a
    // terminal that goes away, and commands such as timeout, send the same signal twice.
    int count() const;

    // Readable as soon as one has come that acknowledge() has not seen.
    int wake_fd() const { return reader_.get(); }
    void acknowledge() const;

    // Sleeps until the time is over or a signal comes.
    void sleep(std::chrono::milliseconds time) const;

private:
    static constexpr int signals_[] = {SIGINT, SIGTERM, SIGHUP};

    Kiln::Descriptor reader_;
    Kiln::Descriptor writer_;
    struct sigaction old_[3] = {};
};
