#include "plan/report/fleet_usage.h"

#include <algorithm>

namespace {

// What the sum changes by. What ends at a moment is still there in it: its end comes last.
struct Change {
    std::int64_t time_ms = 0;
    bool is_end = false;
    std::int64_t by = 0;
};

bool is_earlier(const Change& a, const Change& b) {
    return a.time_ms != b.time_ms ? a.time_ms < b.time_ms : a.is_end < b.is_end;
}

void add_changes(const UsageTrack& track, std::vector<Change>& changes) {
    std::int64_t before = 0;
    for (const TrackValue& value : track.values) {
        changes.push_back({value.time_ms, false, value.value - before});
        before = value.value;
    }
    changes.push_back({std::max(track.end_ms, track.values.back().time_ms), true, -before});
}

// The first of the largest.
TrackValue peak_of(const std::vector<TrackValue>& values) {
    return *std::max_element(
        values.begin(), values.end(),
        [](const TrackValue& a, const TrackValue& b) { return a.value < b.value; });
}

// The sum after all changes of a moment, before its ends and after them: there it falls at once.
std::vector<TrackValue> sums_of(const std::vector<Change>& changes) {
    std::vector<TrackValue> sums;
    std::int64_t sum = 0;
    for (std::size_t i = 0; i < changes.size(); ++i) {
        if (changes[i].is_end && sums.back().time_ms != changes[i].time_ms) {
            sums.push_back({changes[i].time_ms, sum});
        }
        sum += changes[i].by;
        if (i + 1 == changes.size() || is_earlier(changes[i], changes[i + 1])) {
            sums.push_back({changes[i].time_ms, sum});
        }
    }
    sums.pop_back();  // the end of all of them
    return sums;
}

}  // namespace

std::optional<FleetUsage> sum_usage(const std::vector<const UsageTrack*>& tracks) {
    FleetUsage fleet;
    std::vector<Change> changes;
    for (const UsageTrack* track : tracks) {
        if (!track->values.empty()) {
            ++fleet.servers;
            fleet.sum_of_peaks += peak_of(track->values).value;
            add_changes(*track, changes);
        }
    }
    if (fleet.servers == 0) {
        return {};
    }
    std::sort(changes.begin(), changes.end(), is_earlier);
    fleet.sums = sums_of(changes);
    fleet.peak = peak_of(fleet.sums);
    return fleet;
}
