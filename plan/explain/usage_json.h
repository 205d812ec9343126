// What a host used, as JSON; a part of the explanation's.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "plan/explain/usage_summary.h"

// A list with an object for each quantity that has values, in the order of UsageQuantity. Numbers
// are of the unit that stands beside them.
nlohmann::ordered_json usage_json(const UsageSummaries& usage);
