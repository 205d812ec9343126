// Many servers together: what they use at one moment, against what each one uses at most.
#include "plan/report/fleet_usage.h"

#include <gtest/gtest.h>

#include "plan/report/usage_points.h"
#include "tests/plan/recordings.h"

namespace {

using Sums = std::vector<std::pair<std::int64_t, std::int64_t>>;

Sums sums_of(const FleetUsage& usage) {
    Sums sums;
    for (const TrackValue& sum : usage.sums) {
        sums.emplace_back(sum.time_ms, sum.value);
    }
    return sums;
}

TEST(FleetUsage, AValueHoldsUntilTheNextOneAndToTheEnd) {
    const UsageTrack early{{{0, 10}, {100, 30}, {200, 20}}, 250};
    const UsageTrack late{{{150, 5}, {260, 50}}, 260};
    const UsageTrack silent;
    const FleetUsage usage = *sum_usage({&early, &late, &silent});
    EXPECT_EQ(usage.servers, 2U);
    EXPECT_EQ(usage.sum_of_peaks, 80);
    EXPECT_EQ(sums_of(usage),
              (Sums{{0, 10}, {100, 30}, {150, 35}, {200, 25}, {250, 25}, {250, 5}, {260, 50}}));
    EXPECT_EQ(usage.peak.value, 50);
    EXPECT_EQ(usage.peak.time_ms, 260);
}

TEST(FleetUsage, WhatEndsAtAMomentIsStillThere) {
    const UsageTrack one{{{0, 7}}, 100};
    const UsageTrack other{{{100, 7}, {200, 14}}, 150};  // said to end before its last value
    const FleetUsage usage = *sum_usage({&one, &other});
    EXPECT_EQ(sums_of(usage), (Sums{{0, 7}, {100, 14}, {100, 7}, {200, 14}}));
    EXPECT_EQ(usage.peak.time_ms, 100) << "the first of the largest";
    EXPECT_EQ(usage.sum_of_peaks, 21);
    EXPECT_FALSE(sum_usage({}));
    const UsageTrack silent;
    EXPECT_FALSE(sum_usage({&silent}));
}

TEST(FleetUsage, AServersTrackGoesByTheClockThatWasSetLast) {
    NamedRecording named = recording_of({1, 1});
    for (std::size_t i = 0; i < 2; ++i) {
        Usage& usage = named.recording.passes[i].usage.emplace();
        usage.memory_kib = 2048;
        usage.uptime_ms = 10000 * static_cast<std::int64_t>(i);
        usage.cpu_ms = 12345 * static_cast<std::int64_t>(i);
    }
    named.recording.passes[1].took_ms = 300;
    ServerUsage usage = server_usage(named);
    ASSERT_EQ(usage.cores_track.values.size(), 1U);
    EXPECT_EQ(usage.cores_track.values[0].value, 1235) << "thousandths";
    EXPECT_EQ(usage.cores_track.values[0].time_ms, 1773324310000);
    EXPECT_EQ(usage.memory_track.values[0].value, 2048);
    EXPECT_EQ(usage.memory_track.end_ms, 1773324310300);
    EXPECT_EQ(usage.charts.size(), 2U);

    named.recording.passes[1].clock_ms = 1800000010000;
    usage = server_usage(named);
    EXPECT_EQ(usage.memory_track.values[0].time_ms, 1800000000000);
    EXPECT_EQ(usage.memory_track.end_ms, 1800000010300);
    EXPECT_TRUE(server_usage(recording_of({1, 2})).memory_track.values.empty());
}

}  // namespace
