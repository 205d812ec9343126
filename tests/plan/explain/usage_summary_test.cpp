// Series and statistics of the usage: percentiles, boots, counters that went back.
#include "plan/explain/usage_summary.h"

#include <gtest/gtest.h>

#include "plan/explain/usage_section.h"
#include "tests/plan/recordings.h"

namespace {

using Values = std::vector<double>;

std::vector<UsageValue> series_of(const std::vector<NamedRecording>& recordings,
                                  UsageQuantity quantity) {
    return usage_series(recordings)[static_cast<std::size_t>(quantity)];
}

Values values_of(const std::vector<NamedRecording>& recordings, UsageQuantity quantity) {
    Values values;
    for (const UsageValue& value : series_of(recordings, quantity)) {
        values.push_back(value.value);
    }
    return values;
}

using Readings = std::vector<std::pair<std::int64_t, std::int64_t>>;  // uptime_ms and a counter

// Passes ten seconds apart whose counters are these.
NamedRecording counting(const Readings& readings) {
    NamedRecording named = recording_of(std::vector<std::int32_t>(readings.size(), 1));
    for (std::size_t i = 0; i < readings.size(); ++i) {
        Usage usage;
        usage.uptime_ms = readings[i].first;
        for (const auto total : {&Usage::cpu_ms, &Usage::disk_read_bytes,
                                 &Usage::disk_written_bytes, &Usage::cpu_pressure_us}) {
            usage.*total = readings[i].second;
        }
        named.recording.passes[i].usage = usage;
    }
    return named;
}

TEST(UsageSummary, PercentilesAreValuesThatWereSeen) {
    std::vector<UsageValue> values(100);
    for (std::size_t i = 0; i < values.size(); ++i) {
        values[i].value = static_cast<double>((i * 7) % 100 + 1);  // 1 to 100 in some order
    }
    for (const auto& [percentile, expected] : {std::pair(1, 1), {50, 50}, {100, 100}}) {
        EXPECT_EQ(summarize_usage(values, percentile).percentile, expected) << percentile;
    }
    values.push_back(values[57]);  // the 100
    EXPECT_EQ(summarize_usage(values, 95).median, 51);
    EXPECT_EQ(summarize_usage(values, 95).percentile, 96);
}

TEST(UsageSummary, ACounterThatDidNotGrowOnBeginsAnew) {
    const std::pair<Readings, Values> cases[] = {
        {{{5000, 1000}, {5000, 2000}}, {}},                     // no time passed
        {{{5000, 1000}, {4000, 2000}, {14000, 7000}}, {0.5}},   // uptime went back
        {{{5000, 9000}, {15000, 1000}, {25000, 6000}}, {0.5}},  // the counter did
        {{{5000, 1000}, {15000, 1000}}, {0}},
    };
    for (const auto& [readings, expected] : cases) {
        EXPECT_EQ(values_of({counting(readings)}, UsageQuantity::cores), expected);
    }
}

TEST(UsageSummary, ARateStaysWithinOneBoot) {
    NamedRecording named = counting({{5000, 0}, {15000, 10000}, {25000, 20000}, {35000, 30000}});
    named.recording.header.hardware.emplace().boot_id = "a";
    Continuation& continuation = named.recording.continuations.emplace_back();
    continuation.at_ms = 20000;
    for (const char* const known : {"a", ""}) {
        continuation.hardware.emplace().boot_id = known;
        EXPECT_EQ(values_of({named}, UsageQuantity::cores), (Values{1, 1, 1})) << known;
    }
    continuation.hardware->boot_id = "b";
    const std::vector<UsageValue> cores = series_of({named}, UsageQuantity::cores);
    ASSERT_EQ(cores.size(), 2U);
    EXPECT_EQ(cores[0].pass, 2);
    EXPECT_EQ(cores[1].pass, 4) << "the third is the first of its boot";
}

TEST(UsageSummary, WhatIsMissingCostsItsValueAlone) {
    NamedRecording named = counting({{5000, 0}, {15000, 10000}, {25000, 40000}});
    named.recording.passes[1].usage->cpu_ms.reset();
    EXPECT_EQ(values_of({named}, UsageQuantity::cores), Values{2}) << "over both stretches";
    EXPECT_EQ(values_of({named}, UsageQuantity::disk_bytes), (Values{2000, 6000}));
    EXPECT_EQ(values_of({named}, UsageQuantity::cpu_pressure), (Values{0.001, 0.003}));
    named.recording.passes[1].usage->disk_written_bytes.reset();
    EXPECT_EQ(values_of({named}, UsageQuantity::disk_bytes), Values{4000});
}

TEST(UsageSummary, RecordingsAreTakenInTheOrderOfTime) {
    NamedRecording late = counting({{100000, 50000}});
    late.recording.header.start += 95;
    late.recording.passes[0].usage->descriptors = ProcessFigure{12, "late"};
    const NamedRecording early = counting({{5000, 0}, {15000, 10000}});
    EXPECT_EQ(values_of({late, early}, UsageQuantity::cores), (Values{1, 40.0 / 85}));
    const UsageValue value = series_of({early, late}, UsageQuantity::descriptors).at(0);
    EXPECT_EQ(value.process, "late");
    EXPECT_EQ(value.recording, 1U);
    EXPECT_EQ(value.time_ms, 1773324395000);
}

// The first line of the section of these.
std::string machine_of(const std::vector<NamedRecording>& recordings) {
    const std::string section =
        usage_section(summarize_usage(usage_series(recordings)), newest_hardware(recordings));
    return section.substr(0, section.find('\n'));
}

TEST(UsageSection, IsOfTheNewestMachine) {
    EXPECT_EQ(machine_of({recording_of({1})}), "usage: not recorded");
    NamedRecording named = counting({{1000, 0}, {11000, 15000}});
    Hardware& hardware = named.recording.header.hardware.emplace();
    hardware.memory_kib = 24539844;
    EXPECT_EQ(machine_of({named}), "machine: 23.4 GiB of memory, no swap");
    hardware.cpus = 1;
    hardware.swap_kib = 1024;
    EXPECT_EQ(machine_of({named}), "machine: 1 processor, 23.4 GiB of memory, 1.0 MiB of swap");
    Continuation& continuation = named.recording.continuations.emplace_back();
    continuation.at_ms = 15000;
    continuation.hardware.emplace().cpus = 16;
    NamedRecording other = recording_of({1});
    other.recording.header.hardware.emplace().cpus = 2;
    EXPECT_EQ(machine_of({named, other}), "machine: 16 processors, no swap");
}

}  // namespace
