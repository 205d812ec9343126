// What the report shows over time: points for the charts, no more than the picture needs, and what
// goes into the sums of all servers. Pure.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "plan/explain/usage_summary.h"
#include "plan/report/fleet_usage.h"

// One value of a series, at a moment of the recording.
struct ReportPoint {
    std::int64_t seconds = 0;  // since the recording's start
    std::int64_t value = 0;    // in the series' own unit
};

// Of every chart.
constexpr std::size_t points_per_series = 200;

// At most `most` of `points` (which are in the order of time; `most` is 4 or more), in their order:
// the first and the last, and the least and the greatest of every slice of equal length between
// them. So the least and the greatest value of all are always kept, each where it first appears.
std::vector<ReportPoint> thinned(const std::vector<ReportPoint>& points, std::size_t most);

// Values of points and tracks are whole numbers: thousandths of a core, KiB where there are bytes.
// So many are one of base_unit_of().
double points_per_unit(UsageQuantity quantity);

// Of a quantity that has a chart and values.
struct UsagePoints {
    UsageQuantity quantity = UsageQuantity::memory;
    std::vector<ReportPoint> points;  // thinned
};

struct ServerUsage {
    std::optional<Hardware> hardware;  // as the newest of those who recorded saw it
    std::vector<UsagePoints> charts;
    UsageTrack cores_track;
    UsageTrack memory_track;
};

ServerUsage server_usage(const NamedRecording& recording);
