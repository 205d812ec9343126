// What many servers use together, over the wall clock. Pure.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

// One value of one server, which holds until the next one.
struct TrackValue {
    std::int64_t time_ms = 0;  // since the epoch
    std::int64_t value = 0;    // in any unit that all tracks share
};

// What one server used. Without values it takes no part.
struct UsageTrack {
    std::vector<TrackValue> values;  // in the order of time
    std::int64_t end_ms = 0;         // the last value holds until then, and then still
};

struct FleetUsage {
    std::size_t servers = 0;        // that take part
    std::int64_t sum_of_peaks = 0;  // as if all had their largest value at once
    TrackValue peak;                // the first of the largest sums
    std::vector<TrackValue>
        sums;  // whenever one changes; the last one is where the last track ends
};

// Nothing where no track has a value.
std::optional<FleetUsage> sum_usage(const std::vector<const UsageTrack*>& tracks);
