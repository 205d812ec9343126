#include "plan/report/usage_points.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "plan/explain/usage_section.h"

namespace {

using Iterator = std::vector<ReportPoint>::const_iterator;

bool less_value(const ReportPoint& a, const ReportPoint& b) {
    return a.value < b.value;
}

void append_extremes(Iterator first, Iterator last, std::vector<ReportPoint>& kept) {
    const Iterator least = std::min_element(first, last, less_value);
    const Iterator greatest = std::max_element(first, last, less_value);
    // In their own order: the line of a chart never runs back in time.
    kept.push_back(*std::min(least, greatest));
    if (least != greatest) {
        kept.push_back(*std::max(least, greatest));
    }
}

// Far more than any host has; what a recording says may be anything.
constexpr double largest = 1e15;

std::int64_t scaled(UsageQuantity quantity, double value) {
    const double product = base_value(quantity, value) * points_per_unit(quantity);
    return std::llround(std::fmin(std::fmax(product, 0.0), largest));
}

std::vector<ReportPoint> points_of(UsageQuantity quantity, const std::vector<UsageValue>& values) {
    std::vector<ReportPoint> points;
    for (const UsageValue& value : values) {
        points.push_back({value.at_ms / 1000, scaled(quantity, value.value)});
    }
    return thinned(points, points_per_series);
}

// The moment of the start by the clock as it was last set: an early pass may have had a wrong one.
std::int64_t start_ms(const Recording& recording) {
    const RecordedPass& last = recording.passes.back();
    return last.clock_ms ? *last.clock_ms - last.at_ms : recording.header.start * 1000;
}

UsageTrack track_of(UsageQuantity quantity, const std::vector<UsageValue>& values,
                    const Recording& recording) {
    UsageTrack track;
    const std::int64_t start = start_ms(recording);
    for (const UsageValue& value : values) {
        track.values.push_back({start + value.at_ms, scaled(quantity, value.value)});
    }
    track.end_ms = start + recording.last_ms();
    return track;
}

}  // namespace

std::vector<ReportPoint> thinned(const std::vector<ReportPoint>& points, std::size_t most) {
    if (points.size() <= most) {
        return points;
    }
    std::vector<ReportPoint> kept{points.front()};
    const std::size_t between = points.size() - 2;
    const std::size_t slices = (most - 2) / 2;
    const auto edge = [&](std::size_t slice) {
        return points.begin() + 1 + static_cast<std::ptrdiff_t>(between * slice / slices);
    };
    for (std::size_t slice = 0; slice < slices; ++slice) {
        append_extremes(edge(slice), edge(slice + 1), kept);
    }
    kept.push_back(points.back());
    return kept;
}

double points_per_unit(UsageQuantity quantity) {
    const std::string unit = base_unit_of(quantity);
    return unit == "cores" ? 1000.0 : unit == "bytes" ? 1.0 / 1024 : 1.0;
}

ServerUsage server_usage(const NamedRecording& named) {
    const UsageSeries series = usage_series({named});
    const auto of = [&](UsageQuantity quantity) -> const std::vector<UsageValue>& {
        return series[static_cast<std::size_t>(quantity)];
    };
    ServerUsage usage;
    usage.hardware = newest_hardware({named});
    for (const UsageQuantity quantity : charted_quantities) {
        if (!of(quantity).empty()) {
            usage.charts.push_back({quantity, points_of(quantity, of(quantity))});
        }
    }
    usage.cores_track = track_of(UsageQuantity::cores, of(UsageQuantity::cores), named.recording);
    usage.memory_track =
        track_of(UsageQuantity::memory, of(UsageQuantity::memory), named.recording);
    return usage;
}
