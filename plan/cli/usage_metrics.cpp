#include "plan/cli/usage_metrics.h"

#include <cstdio>
#include <optional>

#include "plan/explain/usage_section.h"
#include "plan/explain/usage_summary.h"

namespace {

constexpr int percentile = 95;

// tarnhwplan_usage{quantity="memory",unit="bytes",statistic="p95"} 5368709120
std::string gauge(UsageQuantity quantity, const char* statistic, double value) {
    char number[64];
    std::snprintf(number, sizeof(number), "%.10g", base_value(quantity, value));
    return std::string("tarnhwplan_usage{quantity=\"") + name_of(quantity) + "\",unit=\"" +
           base_unit_of(quantity) + "\",statistic=\"" + statistic + "\"} " + number + "\n";
}

std::string gauges_of(UsageQuantity quantity, const std::vector<UsageValue>& values) {
    const UsageSummary summary = summarize_usage(values, percentile);
    if (!summary.peak) {
        return {};
    }
    return gauge(quantity, "median", summary.median) + gauge(quantity, "p95", summary.percentile) +
           gauge(quantity, "peak", summary.peak->value);
}

std::string usage_gauges(const std::vector<NamedRecording>& recordings) {
    const UsageSeries series = usage_series(recordings);
    std::string text;
    for (std::size_t i = 0; i < series.size(); ++i) {
        text += gauges_of(static_cast<UsageQuantity>(i), series[i]);
    }
    return text.empty() ? text
                        : "# HELP tarnhwplan_usage What the host used over the time recorded.\n"
                          "# TYPE tarnhwplan_usage gauge\n" +
                              text;
}

std::string size_gauge(const char* name, const char* help, const std::optional<std::int64_t>& size,
                       std::int64_t unit) {
    const std::string metric = std::string("tarnhwplan_host_") + name;
    return !size ? std::string()
                 : "# HELP " + metric + " " + help + "\n# TYPE " + metric + " gauge\n" + metric +
                       " " + std::to_string(*size * unit) + "\n";
}

}  // namespace

std::string usage_metrics(const std::vector<NamedRecording>& recordings) {
    const std::optional<Hardware> hardware = newest_hardware(recordings);
    std::string text = usage_gauges(recordings);
    if (hardware) {
        text += size_gauge("cpus", "Processors of the host.", hardware->cpus, 1);
        text += size_gauge("memory_bytes", "Memory of the host.", hardware->memory_kib, 1024);
        text += size_gauge("swap_bytes", "Swap space of the host.", hardware->swap_kib, 1024);
    }
    return text;
}
