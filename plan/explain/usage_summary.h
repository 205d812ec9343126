// What a host used over the time of its recordings: series for charts, and their statistics. Pure;
// for the explanation, the page and the limits of a container.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "plan/recording/combined_scan.h"

enum class UsageQuantity {
    memory,           // KiB in use, page cache left out
    swap,             // KiB in use
    tasks,            // threads
    shm,              // KiB in use on /dev/shm
    cores,            // processors in use, on average since the pass before
    runnable,         // processes that run or want to
    disk_bytes,       // read and written each second, since the pass before
    disk_operations,  // each second, since the pass before
    network_bytes,    // received and sent each second, since the pass before
    descriptors,      // of the process that has the most
    locked,           // KiB of the process that has the most
    cpu_pressure,     // share of the time in which some task waited, 0 to 1, since the pass before
    memory_pressure,
    io_pressure,
};
constexpr std::size_t usage_quantity_count = 14;

// Those that a person is shown, and charts are drawn of.
constexpr UsageQuantity charted_quantities[] = {
    UsageQuantity::cores, UsageQuantity::memory,     UsageQuantity::swap,
    UsageQuantity::tasks, UsageQuantity::disk_bytes, UsageQuantity::network_bytes};

// "memory", for members of JSON and for metrics.
const char* name_of(UsageQuantity quantity);
// "memory in use", for a person.
const char* label_of(UsageQuantity quantity);
// The value with its unit: "12.3 GiB", "1,503 tasks", "1.25 cores", "3.4 MiB/s", "2.5 %".
std::string usage_text(UsageQuantity quantity, double value);

// The same for programs: a number of what base_unit_of() names, such as "bytes" or "cores".
double base_value(UsageQuantity quantity, double value);
const char* base_unit_of(UsageQuantity quantity);

// A value at the moment of a pass.
struct UsageValue : Moment {
    double value = 0.0;   // never negative
    std::string process;  // that has it, of descriptors and locked memory; any bytes
};

// The values of every quantity in the order of time, by the place of the quantity. An average since
// the pass before takes two passes of one boot: the first pass behind a reboot has none, nor has
// one whose counter or uptime has not grown or is not known.
using UsageSeries = std::array<std::vector<UsageValue>, usage_quantity_count>;
UsageSeries usage_series(const std::vector<NamedRecording>& recordings);

struct UsageSummary {
    std::size_t values = 0;
    double median = 0.0;             // the 50th percentile
    double percentile = 0.0;         // the one that was asked for
    std::optional<UsageValue> peak;  // the first of the largest; none without values
};

// The Pth percentile is the smallest value that P % of the values do not exceed (nearest rank): one
// that was really seen. `percentile` is 1 to 100.
UsageSummary summarize_usage(const std::vector<UsageValue>& values, int percentile);

// Of every quantity by its place, with the 95th percentile.
using UsageSummaries = std::array<UsageSummary, usage_quantity_count>;
UsageSummaries summarize_usage(const UsageSeries& series);
