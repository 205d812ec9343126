#include "plan/explain/explanation_json.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "plan/recording/json_text.h"
#include "plan/text/utc.h"

namespace {

using nlohmann::ordered_json;

// 1.2, where the float that is nearest to it is meant.
ordered_json factor_json(double factor) {
    char text[32];
    std::snprintf(text, sizeof(text), "%.6g", factor);
    return std::strtod(text, nullptr);
}

template <class Value>
ordered_json optional_factor(const std::optional<Value>& factor) {
    return factor ? factor_json(static_cast<double>(*factor)) : ordered_json();
}

// Where the largest was seen, with its value.
template <class Value, class Moment>
ordered_json peak_json(Value value, const Moment& moment) {
    return {{"value", value},
            {"time", utc_text(moment.time_ms / 1000)},
            {"at_ms", moment.at_ms},
            {"pass", moment.pass},
            {"recording", moment.recording + 1}};
}

ordered_json peak_json(const std::optional<Peak>& peak) {
    return peak ? peak_json(peak->value, *peak) : ordered_json();
}

ordered_json line_json(const LineExplanation& line) {
    ordered_json object;
    object["name"] = line.name;
    object["value"] = text_to_json(line.value);
    object["barrier"] = optional_json(line.barrier);
    object["limit"] = optional_json(line.limit);
    object["meaning"] = line.meaning;
    object["basis"] = name_of(line.basis);
    object["count"] = line.count;
    object["seen"] = line.seen;
    object["peak"] = peak_json(line.peak);
    object["floor"] = optional_json(line.floor);
    object["factor"] = optional_factor(line.factor);
    object["margin"] = optional_factor(line.margin);
    object["made_from"] = texts_to_json(line.made_from);
    object["derivation"] = line.derivation;
    object["remarks"] = texts_to_json(line.remarks);
    object["notes"] = texts_to_json(line.notes);
    return object;
}

std::vector<std::string> all_remarks(const CountSummary& summary) {
    std::vector<std::string> remarks = summary.flaws;
    remarks.insert(remarks.end(), summary.remarks.begin(), summary.remarks.end());
    return remarks;
}

ordered_json count_json(const CountSummary& summary) {
    const Count& count = *summary.count;
    ordered_json object;
    object["name"] = count.name;
    object["label"] = count.label;
    object["unit_bytes"] = summary.unit_bytes;
    object["line"] = count.line;
    object["floor"] = optional_json(floor_of(count));
    object["peak"] = peak_json(summary.peak);
    object["least"] = summary.least;
    object["median"] = summary.median;
    object["mean"] = summary.mean;
    object["remarks"] = texts_to_json(all_remarks(summary));
    object["notes"] = texts_to_json(summary.notes);
    return object;
}

ordered_json gap_json(const Gap& gap) {
    return {{"recording", gap.recording + 1}, {"from_ms", gap.from_ms}, {"to_ms", gap.to_ms}};
}

ordered_json coverage_json(const Coverage& coverage) {
    return {{"grade", coverage.grade},
            {"name", grade_name(coverage.grade)},
            {"planned", coverage.planned},
            {"taken", coverage.taken},
            {"failed", coverage.failed},
            {"longest_gap_ms", coverage.longest_gap_ms},
            {"gaps", list_to_json(coverage.gaps, gap_json)}};
}

// Six places of a rate or a share are more than was measured.
double rounded(UsageQuantity quantity, double value) {
    constexpr double places = 1e6;
    return std::round(base_value(quantity, value) * places) / places;
}

// An object for each quantity that has values, in the order of UsageQuantity. Numbers are of the
// unit that stands beside them.
ordered_json usage_json(const UsageSummaries& usage) {
    ordered_json list = ordered_json::array();
    for (std::size_t i = 0; i < usage.size(); ++i) {
        const auto quantity = static_cast<UsageQuantity>(i);
        if (!usage[i].peak) {
            continue;
        }
        ordered_json peak = peak_json(rounded(quantity, usage[i].peak->value), *usage[i].peak);
        if (!usage[i].peak->process.empty()) {
            peak["process"] = text_to_json(usage[i].peak->process);
        }
        list.push_back({{"name", name_of(quantity)},
                        {"label", label_of(quantity)},
                        {"unit", base_unit_of(quantity)},
                        {"median", rounded(quantity, usage[i].median)},
                        {"p95", rounded(quantity, usage[i].percentile)},
                        {"peak", std::move(peak)}});
    }
    return list;
}

}  // namespace

ordered_json explanation_json(const Explanation& explanation) {
    ordered_json object;
    object["host"] = text_to_json(explanation.host);
    object["state"] = name_of(explanation.verdict.state);
    object["reasons"] = texts_to_json(explanation.verdict.reasons);
    object["coverage"] = coverage_json(explanation.coverage);
    object["remarks"] = texts_to_json(explanation.remarks);
    object["lines"] = list_to_json(explanation.lines, line_json);
    object["counts"] = list_to_json(explanation.counts, count_json);
    object["usage"] = usage_json(explanation.usage);
    return object;
}
