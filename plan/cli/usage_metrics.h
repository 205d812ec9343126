// What a host used, as gauges for the metrics.
#pragma once

#include <string>
#include <vector>

#include "plan/recording/combined_scan.h"

// Median, 95th percentile and peak of every quantity that was measured, and how large the host is;
// empty where the recordings carry neither.
std::string usage_metrics(const std::vector<NamedRecording>& recordings);
