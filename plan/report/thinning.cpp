#include "plan/report/thinning.h"

#include <algorithm>

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
