#include "plan/explain/usage_summary.h"

#include <algorithm>
#include <cstdio>

#include "plan/text/printable.h"

namespace {

using Level = std::optional<std::int64_t> Usage::*;
using Figure = std::optional<ProcessFigure> Usage::*;

constexpr double kib = 1024.0;

// "3.14"
std::string decimal_text(double value, int places) {
    char text[512];  // the largest double has 309 digits
    std::snprintf(text, sizeof text, "%.*f", places, value);
    return text;
}

// What the numbers of a quantity are.
struct Measure {
    const char* base_unit;   // for programs
    double in_base_units;    // one of them
    double per_millisecond;  // a counter's growth by one in each millisecond; 0 for what grows not
    std::string (*text)(double value, const char* things);  // for a person
};

constexpr Measure in_kib = {
    "bytes", kib, 0, [](double value, const char* /*things*/) { return size_text(value * kib); }};
constexpr Measure in_things = {"number", 1, 0, [](double value, const char* things) {
                                   return grouped(static_cast<std::int64_t>(value)) + " " + things;
                               }};
constexpr Measure in_cores = {"cores", 1, 1, [](double value, const char* /*things*/) {
                                  return decimal_text(value, 2) + " cores";
                              }};
constexpr Measure in_bytes_per_second = {
    "bytes_per_second", 1, 1000,
    [](double value, const char* /*things*/) { return size_text(value) + "/s"; }};
constexpr Measure in_things_per_second = {
    "per_second", 1, 1000,
    [](double value, const char* things) { return decimal_text(value, 1) + " " + things; }};
// The counters are microseconds.
constexpr Measure as_share = {"ratio", 1, 0.001, [](double value, const char* /*things*/) {
                                  return decimal_text(value * 100, 1) + " %";
                              }};

struct Quantity {
    const char* name;
    const char* label;
    const Measure& measure;
    const char* things;       // what is counted, where the measure does not say
    Level source;             // what it is at the moment; of a rate, the counter that grows
    Level other = nullptr;    // a counter whose growth is added
    Figure of_one = nullptr;  // instead of a source: the figure of one process
};

// In the order of UsageQuantity.
constexpr Quantity quantities[] = {
    {"memory", "memory in use", in_kib, "", &Usage::memory_kib},
    {"swap", "swap in use", in_kib, "", &Usage::swap_kib},
    {"tasks", "tasks", in_things, "tasks", &Usage::tasks},
    {"shm", "/dev/shm in use", in_kib, "", &Usage::shm_kib},
    {"cores", "cores in use", in_cores, "", &Usage::cpu_ms},
    {"runnable", "runnable processes", in_things, "processes", &Usage::runnable},
    {"disk_bytes", "disk traffic", in_bytes_per_second, "", &Usage::disk_read_bytes,
     &Usage::disk_written_bytes},
    {"disk_operations", "disk operations", in_things_per_second, "operations/s",
     &Usage::disk_operations},
    {"network_bytes", "network traffic", in_bytes_per_second, "", &Usage::net_received_bytes,
     &Usage::net_sent_bytes},
    {"descriptors", "descriptors of one process", in_things, "descriptors", nullptr, nullptr,
     &Usage::descriptors},
    {"locked", "locked memory of one process", in_kib, "", nullptr, nullptr, &Usage::locked_kib},
    {"cpu_pressure", "time in which some task waited for a processor", as_share, "",
     &Usage::cpu_pressure_us},
    {"memory_pressure", "time in which some task waited for memory", as_share, "",
     &Usage::memory_pressure_us},
    {"io_pressure", "time in which some task waited for a disk", as_share, "",
     &Usage::io_pressure_us},
};
static_assert(std::size(quantities) == usage_quantity_count, "a row for each");

bool is_rate(const Quantity& row) {
    return row.measure.per_millisecond > 0;
}

const Quantity& row_of(UsageQuantity quantity) {
    return quantities[static_cast<std::size_t>(quantity)];
}

// A pass that has usage, and the boot that it fell into.
struct Reading {
    const Usage* usage;
    const std::string* boot_id;  // empty where it is not known
    Moment moment;
};

const std::string& boot_id_of(const std::optional<Hardware>& hardware) {
    static const std::string unknown;
    return hardware ? hardware->boot_id : unknown;
}

// The boot of whoever was recording at the moment.
const std::string& boot_id_at(const Recording& recording, std::int64_t at_ms) {
    const std::string* boot_id = &boot_id_of(recording.header.hardware);
    for (const Continuation& continuation : recording.continuations) {
        if (continuation.at_ms <= at_ms) {
            boot_id = &boot_id_of(continuation.hardware);
        }
    }
    return *boot_id;
}

std::vector<Reading> readings_by_time(const std::vector<NamedRecording>& recordings) {
    std::vector<Reading> readings;
    for (const auto& [moment, pass] : passes_by_time(recordings)) {
        if (pass->usage) {
            const Recording& recording = recordings[moment.recording].recording;
            readings.push_back({&*pass->usage, &boot_id_at(recording, moment.at_ms), moment});
        }
    }
    return readings;
}

void add_value(const Reading& reading, double value, const std::string& process,
               std::vector<UsageValue>& values) {
    if (value >= 0) {
        values.push_back({reading.moment, value, process});
    }
}

void add_level(const Quantity& row, const Reading& reading, std::vector<UsageValue>& values) {
    if (row.source != nullptr && reading.usage->*row.source) {
        add_value(reading, static_cast<double>(*(reading.usage->*row.source)), {}, values);
    } else if (row.of_one != nullptr && reading.usage->*row.of_one) {
        const ProcessFigure& figure = *(reading.usage->*row.of_one);
        add_value(reading, static_cast<double>(figure.value), figure.name, values);
    }
}

// What a counter grew; nothing where it went back or is not known. Counters are never negative, so
// that the difference fits.
std::optional<std::int64_t> growth(const Usage& from, const Usage& to, Level counter) {
    const std::optional<std::int64_t>& a = from.*counter;
    const std::optional<std::int64_t>& b = to.*counter;
    if (!a || !b || *a < 0 || *b < *a) {
        return {};
    }
    return *b - *a;
}

bool is_one_boot(const Reading& from, const Reading& to) {
    return from.boot_id->empty() || to.boot_id->empty() || *from.boot_id == *to.boot_id;
}

std::optional<double> rate(const Quantity& row, const Reading& from, const Reading& to) {
    const std::optional<std::int64_t> passed = growth(*from.usage, *to.usage, &Usage::uptime_ms);
    if (!passed || *passed == 0 || !is_one_boot(from, to)) {
        return {};
    }
    double grown = 0.0;
    for (const Level counter : {row.source, row.other}) {
        if (counter != nullptr) {
            const std::optional<std::int64_t> grew = growth(*from.usage, *to.usage, counter);
            if (!grew) {
                return {};
            }
            grown += static_cast<double>(*grew);
        }
    }
    return grown / static_cast<double>(*passed) * row.measure.per_millisecond;
}

bool has_counters(const Quantity& row, const Usage& usage) {
    return usage.uptime_ms && usage.*row.source && (row.other == nullptr || usage.*row.other);
}

// Between a pass and the last one before it that has the counters: where one lacks them, the next
// value is the average over both stretches.
void add_rates(const Quantity& row, const std::vector<Reading>& readings,
               std::vector<UsageValue>& values) {
    const Reading* last = nullptr;
    for (const Reading& reading : readings) {
        if (has_counters(row, *reading.usage)) {
            if (last != nullptr) {
                if (const std::optional<double> value = rate(row, *last, reading)) {
                    add_value(reading, *value, {}, values);
                }
            }
            last = &reading;
        }
    }
}

// `sorted` is not empty.
double nearest_rank(const std::vector<double>& sorted, int percentile) {
    const auto share = static_cast<std::size_t>(std::clamp(percentile, 1, 100));
    const std::size_t rank = (share * sorted.size() + 99) / 100;  // from 1
    return sorted[rank - 1];
}

}  // namespace

const char* name_of(UsageQuantity quantity) {
    return row_of(quantity).name;
}

const char* label_of(UsageQuantity quantity) {
    return row_of(quantity).label;
}

double base_value(UsageQuantity quantity, double value) {
    return value * row_of(quantity).measure.in_base_units;
}

const char* base_unit_of(UsageQuantity quantity) {
    return row_of(quantity).measure.base_unit;
}

std::string usage_text(UsageQuantity quantity, double value) {
    const Quantity& row = row_of(quantity);
    return row.measure.text(value, row.things);
}

UsageSeries usage_series(const std::vector<NamedRecording>& recordings) {
    const std::vector<Reading> readings = readings_by_time(recordings);
    UsageSeries series;
    for (std::size_t i = 0; i < series.size(); ++i) {
        const Quantity& row = quantities[i];
        if (is_rate(row)) {
            add_rates(row, readings, series[i]);
        } else {
            for (const Reading& reading : readings) {
                add_level(row, reading, series[i]);
            }
        }
    }
    return series;
}

UsageSummary summarize_usage(const std::vector<UsageValue>& values, int percentile) {
    UsageSummary summary;
    summary.values = values.size();
    if (values.empty()) {
        return summary;
    }
    std::vector<double> sorted;
    sorted.reserve(values.size());
    for (const UsageValue& value : values) {
        sorted.push_back(value.value);
    }
    std::sort(sorted.begin(), sorted.end());
    constexpr int half = 50;
    summary.median = nearest_rank(sorted, half);
    summary.percentile = nearest_rank(sorted, percentile);
    summary.peak = *std::max_element(
        values.begin(), values.end(),
        [](const UsageValue& a, const UsageValue& b) { return a.value < b.value; });
    return summary;
}

UsageSummaries summarize_usage(const UsageSeries& series) {
    constexpr int usual_percentile = 95;
    UsageSummaries summaries;
    for (std::size_t i = 0; i < series.size(); ++i) {
        summaries[i] = summarize_usage(series[i], usual_percentile);
    }
    return summaries;
}
