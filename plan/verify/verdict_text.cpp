// A verdict for a person, and as JSON.
#include <cstdio>
#include <nlohmann/json.hpp>

#include "plan/recording/json_text.h"
#include "plan/text/printable.h"
#include "plan/verify/verdict.h"

namespace {

using nlohmann::ordered_json;
using Amount = GroupValues::Amount;
using Unit = LimitVerdict::Unit;

constexpr std::size_t column = 17;

std::string cell(const std::string& text) {
    return padded(text, column);
}

std::string amount_text(const Amount& amount, Unit unit, std::int64_t period_us) {
    if (!amount.there) {
        return "-";
    }
    if (amount.unlimited) {
        return "none";
    }
    switch (unit) {
        case Unit::bytes:
            return size_text(static_cast<double>(amount.value));
        case Unit::tasks:
            return grouped(amount.value) + (amount.value == 1 ? " task" : " tasks");
        case Unit::cpu_us:
            break;
    }
    char cores[64];
    std::snprintf(cores, sizeof cores, "%.2f cores",
                  static_cast<double>(amount.value) / static_cast<double>(period_us));
    return cores;
}

std::string row_text(const LimitVerdict& limit, std::int64_t period_us) {
    return cell(limit.name) + cell(amount_text(limit.limit, limit.unit, period_us)) +
           cell(amount_text(limit.now, limit.unit, period_us)) +
           cell(amount_text(limit.peak, limit.unit, period_us)) +
           cell(limit.times_met ? grouped(*limit.times_met) : "-") + name_of(limit.state) + "\n";
}

std::string pressure_text(const char* name, const std::optional<Pressure>& pressure) {
    if (!pressure) {
        return cell(name) + "not known\n";
    }
    constexpr double microseconds = 1e6;
    char text[128];
    std::snprintf(
        text, sizeof text, "some task waited %.1f s in all, %.2f %% of the last 5 minutes\n",
        static_cast<double>(pressure->total_us) / microseconds, pressure->average_percent);
    return cell(name) + text;
}

// null for both: what is not limited is told by the state.
ordered_json amount_json(const Amount& amount) {
    return amount.there && !amount.unlimited ? ordered_json(amount.value) : ordered_json();
}

ordered_json limit_json(const LimitVerdict& limit) {
    constexpr const char* units[] = {"bytes", "tasks", "us of each period"};
    return {{"name", limit.name},
            {"unit", units[static_cast<std::size_t>(limit.unit)]},
            {"limit", amount_json(limit.limit)},
            {"now", amount_json(limit.now)},
            {"peak", amount_json(limit.peak)},
            {"times_met", optional_json(limit.times_met)},
            {"state", name_of(limit.state)}};
}

ordered_json pressure_json(const std::optional<Pressure>& pressure) {
    if (!pressure) {
        return {};
    }
    return {{"total_us", pressure->total_us}, {"average_percent", pressure->average_percent}};
}

}  // namespace

std::string verdict_text(const GroupVerdict& verdict) {
    const GroupValues& values = verdict.values;
    std::string text = "control group: " + printable(values.path) + "\n\n";
    for (const char* const title : {"limit", "is", "now", "peak", "times met"}) {
        text += cell(title);
    }
    text += "state\n";
    for (const LimitVerdict& limit : verdict.limits) {
        text += row_text(limit, values.cpu_period_us);
    }
    text += "\n";
    text += cell("cpu.weight") + (values.cpu_weight ? grouped(*values.cpu_weight) : "-") + "\n" +
            pressure_text("cpu.pressure", values.cpu_pressure) +
            pressure_text("memory.pressure", values.memory_pressure) +
            pressure_text("io.pressure", values.io_pressure) + "\n";
    for (const std::string& line : verdict.raise) {
        text += "! " + line + "\n";
    }
    for (const std::string& remark : verdict.remarks) {
        text += printable(remark) + "\n";
    }
    return text + (verdict.all_fit ? "no limit was met\n" : "");
}

std::string verdict_json(const GroupVerdict& verdict) {
    const GroupValues& values = verdict.values;
    ordered_json object;
    object["control_group"] = text_to_json(values.path);
    object["all_fit"] = verdict.all_fit;
    object["limits"] = list_to_json(verdict.limits, limit_json);
    object["cpu"] = {{"weight", optional_json(values.cpu_weight)},
                     {"usage_us", optional_json(values.cpu_usage_us)},
                     {"period_us", values.cpu_period_us},
                     {"periods", optional_json(values.cpu_periods)},
                     {"throttled_us", optional_json(values.cpu_throttled_us)}};
    object["memory"] = {{"oom", optional_json(values.memory_oom)},
                        {"oom_kill", optional_json(values.memory_oom_kill)},
                        {"high", optional_json(values.memory_high.met)}};
    object["pressure"] = {{"cpu", pressure_json(values.cpu_pressure)},
                          {"memory", pressure_json(values.memory_pressure)},
                          {"io", pressure_json(values.io_pressure)}};
    object["raise"] = texts_to_json(verdict.raise);
    object["remarks"] = texts_to_json(verdict.remarks);
    return printable_json(object.dump(2)) + "\n";
}
