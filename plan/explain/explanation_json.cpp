#include "plan/explain/explanation_json.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "plan/explain/derivation.h"
#include "plan/recording/json_text.h"
#include "plan/text/utc.h"

namespace {

using nlohmann::ordered_json;

// 1.2, where the float that is nearest to it is meant.
template <class Value>
ordered_json optional_factor(const std::optional<Value>& factor) {
    return factor ? ordered_json(std::stod(factor_text(static_cast<double>(*factor))))
                  : ordered_json();
}

// Where the largest was seen, with its value.
template <class Value>
ordered_json peak_json(Value value, const Moment& moment) {
    return {{"value", value},
            {"time", utc_text(moment.time_ms / 1000)},
            {"at_ms", moment.at_ms},
            {"pass", moment.pass},
            {"recording", moment.recording + 1}};
}

ordered_json peak_json(const std::optional<Observation>& peak) {
    return peak ? peak_json(peak->value, *peak) : ordered_json();
}

ordered_json line_json(const LineExplanation& line) {
    return {{"name", line.name},
            {"value", text_to_json(line.value)},
            {"barrier", optional_json(line.barrier)},
            {"limit", optional_json(line.limit)},
            {"meaning", line.meaning},
            {"basis", name_of(line.basis)},
            {"count", line.count},
            {"seen", line.seen},
            {"peak", peak_json(line.peak)},
            {"floor", optional_json(line.floor)},
            {"factor", optional_factor(line.factor)},
            {"margin", optional_factor(line.margin)},
            {"made_from", texts_to_json(line.made_from)},
            {"derivation", line.derivation},
            {"remarks", texts_to_json(line.remarks)},
            {"notes", texts_to_json(line.notes)}};
}

ordered_json count_json(const CountSummary& summary) {
    const Count& count = *summary.count;
    std::vector<std::string> remarks = summary.flaws;
    remarks.insert(remarks.end(), summary.remarks.begin(), summary.remarks.end());
    return {{"name", count.name},
            {"label", count.label},
            {"unit_bytes", summary.unit_bytes},
            {"line", count.line},
            {"floor", optional_json(floor_of(count))},
            {"peak", peak_json(summary.peak)},
            {"least", summary.least},
            {"median", summary.median},
            {"mean", summary.mean},
            {"remarks", texts_to_json(remarks)},
            {"notes", texts_to_json(summary.notes)}};
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
    return {{"host", text_to_json(explanation.host)},
            {"state", name_of(explanation.verdict.state)},
            {"reasons", texts_to_json(explanation.verdict.reasons)},
            {"coverage", coverage_json(explanation.coverage)},
            {"remarks", texts_to_json(explanation.remarks)},
            {"lines", list_to_json(explanation.lines, line_json)},
            {"counts", list_to_json(explanation.counts, count_json)},
            {"usage", usage_json(explanation.usage)}};
}
