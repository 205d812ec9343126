// The time of a scan: what time it is, how to wait, and when the next pass is due.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

#include "kiln/sleep.h"

// Seconds since the epoch.
std::int64_t system_seconds();

// The default is the real clock.
struct Clock {
    std::function<std::int64_t()> now = system_seconds;          // seconds since the epoch
    std::function<void(std::int32_t)> sleep = Kiln::sleep_full;  // seconds, in full
    // What a sleep in slices is measured by: nobody sets it, and it goes on while the process is
    // stopped.
    std::function<std::chrono::steady_clock::time_point()> steady = std::chrono::steady_clock::now;
};

// When the passes of a scan are due. The interval shrinks near the end, so that the last pass falls
// on the end of the scan, and stays shrunk.
struct ScanSchedule {
    std::int64_t end_time = 0;  // seconds since the epoch
    std::int32_t interval = 0;  // seconds between two passes
    bool one_pass = false;      // without a span: over with its first pass, whatever the clock says
};

ScanSchedule make_schedule(std::int64_t start, std::int32_t scan_time, std::int32_t scan_period);

// The seconds to sleep before the next pass, with the schedule's interval shrunk where it must be;
// -1 when the scan is over. A scan of 5 minutes by 2 begins its passes at 0, 2, 4 and 5.
std::int32_t next_sleep(ScanSchedule& schedule, std::int64_t now);
