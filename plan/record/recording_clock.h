// The time of a recording: milliseconds since its start, by the clock that nobody sets and that
// goes on while the machine sleeps. Only over a reboot does the wall clock tell how long it took.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "plan/recording/recording.h"

std::int64_t kernel_boot_ms();  // since the machine was started
std::int64_t system_wall_ms();  // since the epoch

// The real clocks, unless somebody hands in others.
struct TimeSources {
    std::function<std::int64_t()> boot_ms = kernel_boot_ms;
    std::function<std::int64_t()> wall_ms = system_wall_ms;
};

class RecordingClock {
public:
    // Of a recording that starts now.
    explicit RecordingClock(TimeSources sources);

    // Of one that goes on, on a machine with this boot id. Never before its last line. A clock that
    // tells of a gap that no service leaves was set meanwhile, or still will be: then the gap is as
    // long as the machine has been up, and doubts() says what the clock said.
    RecordingClock(TimeSources sources, const Recording& recording, const std::string& boot_id);

    std::int64_t now_ms() const { return sources_.boot_ms() + offset_ms_; }
    std::int64_t boot_ms() const { return sources_.boot_ms(); }
    std::int64_t wall_ms() const { return sources_.wall_ms(); }

    // Nothing where the wall clock is believed.
    const std::optional<std::string>& doubts() const { return doubts_; }

private:
    TimeSources sources_;
    std::int64_t offset_ms_ = 0;  // of the recording's time to the time since the machine started
    std::optional<std::string> doubts_;
};
