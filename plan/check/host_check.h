// The check of a host: every source that a run asks, asked once in the run's order, and what would
// make the numbers wrong though a run succeeds.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "inspect/host.h"
#include "plan/recording/finding.h"

// One source and what came of it.
struct CheckedStep {
    std::string what;
    std::string command;  // in full, or the file that is read
    bool succeeded = false;
    bool forgiven = false;  // a run goes on where this fails
    std::string result;     // what was found, or the reason why nothing was
    std::int64_t took_ms = 0;
    std::vector<std::string> lines;  // of the configuration, that live on it
};

struct HostCheck {
    std::vector<CheckedStep> steps;
    CheckFindings findings;

    // Whether a run comes to its end.
    bool run_succeeds() const;
};

// Each step may take so many seconds; one that hangs is left behind.
constexpr int check_limit_seconds = 10;

// All of them together; what there is no time for is left out, and a finding says so.
constexpr int check_total_seconds = 60;

// What is asked when `wake_fd` (or -1) can be read is left at once, and so is the rest: then what
// was found is not to be used. What there can be no child process for has failed.
HostCheck check_host(const Host& host, int limit_seconds = check_limit_seconds, int wake_fd = -1,
                     int total_seconds = check_total_seconds);
