// What the report shows of a server's usage: points for the charts, and what goes into the sums of
// all servers. Pure.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "plan/explain/usage_summary.h"
#include "plan/report/fleet_usage.h"
#include "plan/report/thinning.h"

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
