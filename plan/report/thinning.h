// Fewer points for the same picture.
#pragma once

#include <cstddef>
#include <vector>

#include "plan/report/report_model.h"

// At most `most` of `points` (which are in the order of time; `most` is 4 or more), in their order:
// the first and the last, and the least and the greatest of every slice of equal length between
// them. So the least and the greatest value of all are always kept, each where it first appears.
std::vector<ReportPoint> thinned(const std::vector<ReportPoint>& points, std::size_t most);
