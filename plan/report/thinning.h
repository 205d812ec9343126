// Fewer points for the same picture.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

// One value of a count, at a moment of the recording.
struct ReportPoint {
    std::int64_t seconds = 0;  // since the recording's start
    std::int64_t value = 0;    // in the count's own unit
};

// Of every chart.
constexpr std::size_t points_per_series = 200;

// At most `most` of `points` (which are in the order of time; `most` is 4 or more), in their order:
// the first and the last, and the least and the greatest of every slice of equal length between
// them. So the least and the greatest value of all are always kept, each where it first appears.
std::vector<ReportPoint> thinned(const std::vector<ReportPoint>& points, std::size_t most);
