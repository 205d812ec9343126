// Many servers together: what they use at one moment, against what each one uses at most.
#include "plan/report/fleet_usage.h"

#include <gtest/gtest.h>

#include "plan/report/usage_points.h"
#include "tests/plan/recordings.h"

namespace {

std::string sums_of(const std::vector<const UsageTrack*>& tracks) {
    const std::optional<FleetUsage> usage = sum_usage(tracks);
    if (!usage) {
        return "none";
    }
    std::string text = std::to_string(usage->servers) + " servers:";
    for (const TrackValue& sum : usage->sums) {
        text += " " + std::to_string(sum.value) + " at " + std::to_string(sum.time_ms) + ",";
    }
    return text + " at most " + std::to_string(usage->peak.value) + " at " +
           std::to_string(usage->peak.time_ms) + ", each " + std::to_string(usage->sum_of_peaks);
}

TEST(FleetUsage, AValueHoldsUntilTheNextOneAndToTheEnd) {
    const UsageTrack silent;
    EXPECT_EQ(sums_of({&silent}), "none");
    const UsageTrack early{{{0, 10}, {100, 30}, {200, 20}}, 250};
    const UsageTrack late{{{150, 5}, {260, 50}}, 260};
    EXPECT_EQ(sums_of({&early, &late, &silent}),
              "2 servers: 10 at 0, 30 at 100, 35 at 150, 25 at 200, 25 at 250, 5 at 250, 50 at 260,"
              " at most 50 at 260, each 80");
    // What ends at a moment is still there in it, and the first of the largest counts.
    const UsageTrack one{{{0, 7}}, 100};
    const UsageTrack other{{{100, 7}, {200, 14}}, 200};
    EXPECT_EQ(sums_of({&one, &other}),
              "2 servers: 7 at 0, 14 at 100, 7 at 100, 14 at 200, at most 14 at 100, each 21");
}

TEST(FleetUsage, AServersTrackGoesByTheClockThatWasSetLast) {
    NamedRecording named = recording_of({1, 1});
    for (std::size_t i = 0; i < 2; ++i) {
        Usage& usage = named.recording.passes[i].usage.emplace();
        usage.memory_kib = 2048;
        usage.uptime_ms = 10000 * i;
        usage.cpu_ms = 12345 * i;
    }
    named.recording.passes[1].took_ms = 300;
    named.recording.passes[1].clock_ms = 1800000010000;
    const ServerUsage usage = server_usage(named);
    ASSERT_EQ(usage.cores_track.values.size(), 1U);
    EXPECT_EQ(usage.cores_track.values[0].value, 1235) << "thousandths";
    EXPECT_EQ(usage.memory_track.values[0].time_ms, 1800000000000);
    EXPECT_EQ(usage.memory_track.end_ms, 1800000010300);
}

}  // namespace
