#include "plan/explain/usage_json.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "plan/recording/json_text.h"
#include "plan/text/utc.h"

namespace {

using nlohmann::ordered_json;

// Six places of a rate or a share are more than was measured.
double rounded(UsageQuantity quantity, double value) {
    constexpr double places = 1e6;
    return std::round(base_value(quantity, value) * places) / places;
}

ordered_json peak_json(UsageQuantity quantity, const UsageValue& peak) {
    ordered_json object = {{"value", rounded(quantity, peak.value)},
                           {"time", utc_text(peak.time_ms / 1000)},
                           {"at_ms", peak.at_ms},
                           {"pass", peak.pass},
                           {"recording", peak.recording + 1}};
    if (!peak.process.empty()) {
        object["process"] = text_to_json(peak.process);
    }
    return object;
}

}  // namespace

ordered_json usage_json(const UsageSummaries& usage) {
    ordered_json list = ordered_json::array();
    for (std::size_t i = 0; i < usage.size(); ++i) {
        const auto quantity = static_cast<UsageQuantity>(i);
        if (usage[i].peak) {
            list.push_back({{"name", name_of(quantity)},
                            {"label", label_of(quantity)},
                            {"unit", base_unit_of(quantity)},
                            {"median", rounded(quantity, usage[i].median)},
                            {"p95", rounded(quantity, usage[i].percentile)},
                            {"peak", peak_json(quantity, *usage[i].peak)}});
        }
    }
    return list;
}
