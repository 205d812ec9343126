#include "plan/explain/explanation_json.h"

#include <cstdio>
#include <cstdlib>
#include <nlohmann/json.hpp>

#include "plan/explain/usage_json.h"
#include "plan/recording/json_text.h"
#include "plan/text/utc.h"

namespace {

using nlohmann::ordered_json;

template <class Value>
ordered_json optional_json(const std::optional<Value>& value) {
    return value ? ordered_json(*value) : ordered_json();
}

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

ordered_json peak_json(const std::optional<Peak>& peak) {
    if (!peak) {
        return {};
    }
    return {{"value", peak->value},
            {"time", utc_text(peak->time_ms / 1000)},
            {"at_ms", peak->at_ms},
            {"pass", peak->pass},
            {"recording", peak->recording + 1}};
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
