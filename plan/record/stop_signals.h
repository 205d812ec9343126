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

    // Whether one has come.
    bool requested() const;

    // Readable from then on.
    int wake_fd() const { return reader_.get(); }

    // Sleeps until the time is over or a signal comes.
    void sleep(std::chrono::milliseconds time) const;

private:
    static constexpr int signals_[] = {SIGINT, SIGTERM, SIGHUP};

    Kiln::Descriptor reader_;
    Kiln::Descriptor writer_;
    struct sigaction old_[3] = {};
};
