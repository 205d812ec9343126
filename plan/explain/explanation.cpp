#include "plan/explain/explanation.h"

#include <array>
#include <cstdio>
#include <limits>

#include "plan/text/printable.h"

namespace {

constexpr std::uint64_t most_int32 = std::numeric_limits<std::int32_t>::max();
constexpr std::uint64_t no_limit = std::numeric_limits<std::int64_t>::max();
constexpr std::uint64_t first_negative = std::uint64_t{1} << 63;

std::string amount_text(std::uint64_t number, const LineFacts& line, std::int32_t page_size) {
    if (number >= first_negative) {
        return "a negative number";
    }
    const std::int64_t bytes = bytes_of(line.unit, page_size);
    if (bytes == 0) {
        return std::to_string(number) + " " + line.label;
    }
    return size_text(static_cast<double>(number) * static_cast<double>(bytes));
}

// A limit that no measurement changes is none.
bool has_own_limit(const ConfigLine& line) {
    return line.limit != line.barrier && (line.limit != most_int32 || line.margin > 1.0);
}

std::string meaning_of(const ConfigLine& line, std::int32_t page_size) {
    if (line.kind == LineFacts::Kind::text) {
        return {};
    }
    if (line.barrier == 0 && line.limit == no_limit) {
        return "not limited";
    }
    const std::string barrier = amount_text(line.barrier, line, page_size);
    return has_own_limit(line)
               ? barrier + ", " + amount_text(line.limit, line, page_size) + " for a moment"
               : barrier;
}

std::string value_of(const ConfigLine& line) {
    switch (line.kind) {
        case LineFacts::Kind::pair:
            return std::to_string(line.barrier) + ":" + std::to_string(line.limit);
        case LineFacts::Kind::number:
            return std::to_string(line.limit);
        case LineFacts::Kind::text:
            break;
    }
    return line.text;
}

std::optional<float> factor_of(const Count& count, ConfigScales scales) {
    switch (count.factor) {
        case Factor::memory:
            return scales.memory;
        case Factor::disk:
            return scales.disk;
        case Factor::two:
            return 2.0F;
        case Factor::none:
            break;
    }
    return {};
}

std::string seen_text(const CountSummary& count) {
    if (!count.peak) {
        return {};
    }
    const std::string number = std::to_string(count.peak->value);
    if (count.unit_bytes == 0 || count.peak->value < 0) {
        return number + " " + count.count->label;
    }
    const auto bytes = static_cast<double>(count.unit_bytes) * count.peak->value;
    return size_text(bytes) + " (" + number + ")";
}

class Explainer {
public:
    Explainer(const CombinedScan& scan, ConfigScales scales,
              const std::vector<CountSummary>& counts)
        : scan_(scan), scales_(scales), counts_(counts) {}

    LineExplanation explain(const ConfigLine& line) const;

private:
    void explain_own_count(const ConfigLine& line, LineExplanation& explanation) const;
    void explain_sampled_count(const CountSummary& summary, const ConfigLine& line,
                               LineExplanation& explanation) const;
    void explain_average(LineExplanation& explanation) const;
    void explain_quotas(LineExplanation& explanation) const;
    void explain_from_others(const ConfigLine& line, LineExplanation& explanation) const;
    void add_overflow_remarks(const ConfigLine& line, LineExplanation& explanation) const;

    const CombinedScan& scan_;
    const ConfigScales scales_;
    const std::vector<CountSummary>& counts_;
};

void Explainer::explain_from_others(const ConfigLine& line, LineExplanation& explanation) const {
    explanation.basis = Basis::derived;
    for (const Count* source : line.sources) {
        if (source->line != explanation.name) {
            explanation.made_from.emplace_back(source->line);
        }
    }
}

void Explainer::explain_average(LineExplanation& explanation) const {
    explanation.count = average_count.name;
    const bool is_floor =
        scales_.memory * scan_.profile.avnumproc <= static_cast<float>(*explanation.floor);
    explanation.basis = is_floor ? Basis::floor : Basis::measurement;
    char text[64];
    std::snprintf(text, sizeof(text), "%.1f %s", static_cast<double>(scan_.profile.avnumproc),
                  average_count.label);
    explanation.seen = text;
}

void Explainer::explain_quotas(LineExplanation& explanation) const {
    explanation.basis = Basis::finding;
    if (scan_.profile.quotaugidlimit == 0) {
        explanation.floor.reset();
        explanation.factor.reset();
    }
}

void Explainer::explain_sampled_count(const CountSummary& summary, const ConfigLine& line,
                                      LineExplanation& explanation) const {
    const Count& count = *summary.count;
    explanation.count = count.name;
    explanation.peak = summary.peak;
    explanation.seen = seen_text(summary);
    if (count.field == &PhysParams::diskinodes && scan_.reiserfs_found) {
        explanation.basis = Basis::finding;
        explanation.remarks.emplace_back("reiserfs counts no inodes: the number is a guess");
        return;
    }
    const std::int32_t own = apply_rule(count, scan_.profile.*count.field, scales_);
    if (own < static_cast<std::int64_t>(line.barrier)) {
        // More open files than were seen: for sockets and terminals, or for the processes.
        explain_from_others(line, explanation);
    } else if (explanation.floor && own == apply_rule(count, 0, scales_)) {
        explanation.basis = Basis::floor;
    } else {
        explanation.basis = Basis::measurement;
        explanation.remarks = summary.remarks;
    }
}

// A line that a count gives its size.
void Explainer::explain_own_count(const ConfigLine& line, LineExplanation& explanation) const {
    const Count& count = line.sources.front();
    explanation.factor = factor_of(count, scales_);
    explanation.floor = floor_of(count);
    const std::size_t place = place_of(count.field);
    if (&count == &average_count) {
        explain_average(explanation);
    } else if (&count == &quota_count) {
        explain_quotas(explanation);
    } else if (place < counts_.size()) {
        explain_sampled_count(counts_[place], line, explanation);
    } else {  // never counted
        explanation.basis = Basis::fixed;
    }
}

void Explainer::add_overflow_remarks(const ConfigLine& line, LineExplanation& explanation) const {
    if (line.kind == LineFacts::Kind::text) {
        return;
    }
    if (line.wrapped || line.barrier >= first_negative) {
        explanation.remarks.emplace_back("the number did not fit into 32 bits and wrapped around");
    } else if (line.barrier == most_int32 || (line.limit == most_int32 && has_own_limit(line))) {
        explanation.remarks.emplace_back("the number was clamped to the largest of 32 bits");
    }
}

LineExplanation Explainer::explain(const ConfigLine& line) const {
    LineExplanation explanation;
    explanation.name = line.name;
    explanation.value = value_of(line);
    if (line.kind == LineFacts::Kind::pair) {
        explanation.barrier = line.barrier;
    }
    if (line.kind != LineFacts::Kind::text) {
        explanation.limit = line.limit;
    }
    explanation.meaning = meaning_of(line, scan_.page_size);
    if (line.margin > 1.0) {
        explanation.margin = line.margin;
    }
    if (line.kind == LineFacts::Kind::text) {
        explanation.basis = line.step ? Basis::finding : Basis::fixed;
    } else if (!line.sources.empty()) {
        if (line.sources.front().line == explanation.name) {
            explain_own_count(line, explanation);
        } else {
            explain_from_others(line, explanation);
        }
    }
    if (explanation.basis == Basis::floor &&
        line.sources.front().floor.place == Floor::Place::behind_factor) {
        explanation.factor.reset();
    }
    add_overflow_remarks(line, explanation);
    return explanation;
}

LineExplanation explain_missing(const MissingLine& missing) {
    LineExplanation explanation;
    explanation.name = missing.name;
    explanation.basis = Basis::missing;
    explanation.remarks.push_back(missing.reason);
    return explanation;
}

}  // namespace

std::optional<std::int32_t> floor_of(const Count& count) {
    return count.floor.place == Floor::Place::none ? std::nullopt
                                                   : std::optional(count.floor.value);
}

const char* name_of(Basis basis) {
    constexpr std::array<const char*, 6> names = {"measurement", "floor", "derived",
                                                  "finding",     "fixed", "missing"};
    return names[static_cast<std::size_t>(basis)];
}

Explanation explain(const std::vector<NamedRecording>& recordings, const CombinedScan& scan,
                    ConfigScales scales) {
    Explanation explanation;
    explanation.host = scan.profile.hostname;
    explanation.counts = summarize_counts(recordings, scan.page_size);
    explanation.coverage = measure_coverage(recordings);
    const ComputedConfig computed = compute_known_lines(scan, scales);
    const Explainer explainer(scan, scales, explanation.counts);
    for (const ConfigLine& line : computed.lines) {
        if (line.kind != LineFacts::Kind::text || !line.text.empty()) {
            explanation.lines.push_back(explainer.explain(line));
        }
    }
    for (const MissingLine& missing : computed.missing) {
        explanation.lines.push_back(explain_missing(missing));
    }
    explanation.remarks = find_flaws(recordings, scan, computed);
    return explanation;
}
