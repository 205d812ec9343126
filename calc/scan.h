// A scan: passes over the host for as long as asked, the largest of every count kept.
#pragma once

#include <cstdint>
#include <optional>

#include "calc/host_profile.h"
#include "calc/sample.h"
#include "calc/scan_clock.h"
#include "calc/scan_observer.h"

struct ScanSpans {
    std::int32_t time = 0;    // seconds to keep sampling
    std::int32_t period = 0;  // seconds between two passes
};

// Takes passes until the time is over; at least one. Returns the failure that ended it early, if
// any; the profile keeps what was counted before it. `observer` may be null; its exceptions end the
// scan.
std::optional<SampleFailure> run_scan(const Host& host, const Clock& clock, ScanSpans spans,
                                      ScanObserver* observer, PhysParams& profile);
