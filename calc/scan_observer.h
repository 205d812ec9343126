// What the sampling loop tells whoever wants to show how a long scan goes on. The loop knows
// nothing of terminals; the entry hands it an observer through TarnHWCalc::scan_observer.
#pragma once

#include <cstdint>

struct ScanProgress {
    std::int64_t elapsed_seconds = 0;    // since the scan began
    std::int64_t total_seconds = 0;      // the scan time
    std::int64_t next_pass_seconds = 0;  // until the next pass begins; 0 while a pass is running
    std::int32_t passes_done = 0;
};

class ScanObserver {
public:
    virtual ~ScanObserver() = default;

    // Called at the start of every pass and about once a second between two passes.
    virtual void progress(const ScanProgress& progress) = 0;

    // Called once when the scan is over, whether it succeeded or not.
    virtual void finished() = 0;
};
