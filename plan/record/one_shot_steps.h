// The steps that a run takes once, each in a child process that may not take too long.
#pragma once

#include <cstdint>

#include "inspect/host.h"
#include "plan/recording/recording.h"

struct StepOutcome {
    Findings findings;  // with the failure, where the step failed or was ended
    std::int64_t took_ms = 0;
    bool stopped = false;  // somebody woke us before it ended
    bool ended = false;    // the step came to its own end, with or without a failure
};

// Takes one step, for so many seconds at most and until `wake_fd` (or -1) can be read. What it
// finds is added to what others did.
StepOutcome take_one_shot_step(const Host& host, OneShotStep step, int limit_seconds, int wake_fd,
                               Findings findings = {});
