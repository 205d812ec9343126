#include "plan/explain/explanation.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>

#include "plan/explain/derivation.h"
#include "plan/explain/usage_section.h"
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
        return grouped(static_cast<std::int64_t>(number)) + " " + line.label;
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

// "1,712.3"
std::string one_decimal(double number) {
    char text[64];
    std::snprintf(text, sizeof(text), "%.1f", std::fabs(number));
    const std::string digits = text;
    const std::size_t point = digits.find('.');
    return (std::signbit(number) ? "-" : "") + grouped(std::stoll(digits)) + digits.substr(point);
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

// What became of a number that did not fit; null where it did.
const char* misfit_of(const ConfigLine& line) {
    if (line.kind == LineFacts::Kind::text) {
        return nullptr;
    }
    if (line.wrapped || line.barrier >= first_negative) {
        return "the number did not fit into 32 bits and wrapped around";
    }
    const bool is_clamped =
        line.barrier == most_int32 || (line.limit == most_int32 && has_own_limit(line));
    return is_clamped ? "the number was clamped to the largest of 32 bits" : nullptr;
}

// What every line is explained from.
struct Known {
    const CombinedScan& scan;
    const ConfigScales scales;
    const std::vector<CountSummary>& counts;
    const std::vector<ConfigLine>& lines;
};

void explain_from_others(const Known& known, const ConfigLine& line, LineExplanation& explanation) {
    explanation.basis = Basis::derived;
    for (const Count* source : line.sources) {
        if (source->line != explanation.name) {
            explanation.made_from.emplace_back(source->line);
        }
    }
    explanation.derivation = derivation_of(line, known.lines, known.scan, known.scales);
}

void explain_average(const Known& known, LineExplanation& explanation) {
    explanation.count = average_count.name;
    const bool is_floor = known.scales.memory * known.scan.profile.avnumproc <=
                          static_cast<float>(*explanation.floor);
    explanation.basis = is_floor ? Basis::floor : Basis::measurement;
    explanation.seen =
        one_decimal(static_cast<double>(known.scan.profile.avnumproc)) + " " + average_count.label;
    explanation.notes.push_back(
        "this is the mean of the largest number up to each pass; the mean of the passes is " +
        one_decimal(known.counts[place_of(&PhysParams::numproc)].mean));
}

void explain_quotas(const Known& known, LineExplanation& explanation) {
    explanation.basis = Basis::finding;
    if (known.scan.profile.quotaugidlimit == 0) {
        explanation.floor.reset();
        explanation.factor.reset();
    }
}

void explain_sampled_count(const Known& known, const CountSummary& summary, const ConfigLine& line,
                           LineExplanation& explanation) {
    const Count& count = *summary.count;
    explanation.count = count.name;
    explanation.peak = summary.peak;
    explanation.seen = summary.peak ? amount_text(summary, summary.peak->value) : "";
    explanation.remarks = summary.flaws;
    if (count.field == &PhysParams::diskinodes && known.scan.reiserfs_found) {
        explanation.basis = Basis::finding;
        explanation.remarks.emplace_back("reiserfs counts no inodes: the number is a guess");
        return;
    }
    // What the count alone would come to: where the line has more, others have raised it.
    const std::int32_t own = apply_rule(count, known.scan.profile.*count.field, known.scales);
    if (own < static_cast<std::int64_t>(line.barrier)) {
        // More open files than were seen: for sockets and terminals, or for the processes.
        explain_from_others(known, line, explanation);
    } else if (explanation.floor && own == apply_rule(count, 0, known.scales)) {
        explanation.basis = Basis::floor;
    } else {
        explanation.basis = Basis::measurement;
        explanation.remarks.insert(explanation.remarks.end(), summary.remarks.begin(),
                                   summary.remarks.end());
        explanation.notes = summary.notes;
    }
}

// A line that a count gives its size.
void explain_own_count(const Known& known, const ConfigLine& line, LineExplanation& explanation) {
    const Count& count = line.sources.front();
    explanation.factor = factor_of(count, known.scales);
    explanation.floor = floor_of(count);
    const std::size_t place = place_of(count.field);
    if (&count == &average_count) {
        explain_average(known, explanation);
    } else if (&count == &quota_count) {
        explain_quotas(known, explanation);
    } else if (place < known.counts.size()) {
        explain_sampled_count(known, known.counts[place], line, explanation);
    }  // else it is never counted, and fixed
}

// Its own number, or else one that it is made from.
void add_misfit_remarks(const Known& known, const ConfigLine& line, LineExplanation& explanation) {
    if (const char* own = misfit_of(line)) {
        explanation.remarks.emplace_back(own);
        return;
    }
    for (const std::string& part : parts_of(explanation.name)) {
        const ConfigLine* found = find_line(known.lines, part);
        const char* misfit = found == nullptr ? nullptr : misfit_of(*found);
        if (misfit != nullptr && explanation.basis == Basis::derived) {
            explanation.remarks.push_back("it is made from " + part + ": there " + misfit);
        }
    }
}

LineExplanation explain_line(const Known& known, const ConfigLine& line) {
    LineExplanation explanation;
    explanation.name = line.name;
    explanation.value = value_of(line);
    if (line.kind == LineFacts::Kind::pair) {
        explanation.barrier = line.barrier;
    }
    if (line.kind != LineFacts::Kind::text) {
        explanation.limit = line.limit;
    }
    explanation.meaning = meaning_of(line, known.scan.page_size);
    if (line.margin > 1.0) {
        explanation.margin = line.margin;
    }
    if (line.kind == LineFacts::Kind::text) {
        explanation.basis = line.step ? Basis::finding : Basis::fixed;
    } else if (!line.sources.empty()) {
        if (line.sources.front().line == explanation.name) {
            explain_own_count(known, line, explanation);
        } else {
            explain_from_others(known, line, explanation);
        }
    }
    if (explanation.basis == Basis::floor &&
        line.sources.front().floor.place == Floor::Place::behind_factor) {
        explanation.factor.reset();
    }
    if (is_odd_for_a_shell(line)) {
        explanation.remarks.emplace_back("a shell that reads the configuration acts on this text");
    }
    add_misfit_remarks(known, line, explanation);
    return explanation;
}

LineExplanation explain_missing(const MissingLine& missing) {
    LineExplanation explanation;
    explanation.name = missing.name;
    explanation.basis = Basis::missing;
    explanation.remarks.push_back(missing.reason);
    return explanation;
}

// The host's detection script said nothing; the warning says why.
LineExplanation explain_no_distribution(const PhysParams& profile) {
    LineExplanation explanation = explain_missing({"DISTRIBUTION", "the host did not name it"});
    for (const TarnACalculateHWNodeWarning& warning : profile.notes.warnings) {
        if (warning.code == 0) {  // of the distribution
            explanation.remarks.push_back(warning.message);
        }
    }
    return explanation;
}

// The verdict has said why there is no last line.
std::vector<std::string> remarks_on(const std::vector<NamedRecording>& recordings,
                                    const Explanation& explanation,
                                    const std::vector<std::string>& flaws) {
    std::vector<std::string> remarks;
    const auto add = [&](const std::string& text) {
        const std::vector<std::string>& reasons = explanation.verdict.reasons;
        if (std::find(reasons.begin(), reasons.end(), text) == reasons.end() &&
            std::find(remarks.begin(), remarks.end(), text) == remarks.end()) {
            remarks.push_back(text);
        }
    };
    for (const std::string& flaw : flaws) {
        add(flaw);
    }
    for (const NamedRecording& named : recordings) {
        for (const CheckResult& check : named.recording.checks) {
            for (const CheckFinding& finding : check.findings) {
                if (!spoils(finding)) {
                    add("the check found: " + finding.text);
                }
            }
        }
    }
    return remarks;
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
    explanation.usage = summarize_usage(usage_series(recordings));
    const ComputedConfig computed = compute_known_lines(scan, scales);
    const std::optional<Hardware> hardware = newest_hardware(recordings);
    const Known known = {scan, scales, explanation.counts, computed.lines};
    for (const ConfigLine& line : computed.lines) {
        if (line.kind != LineFacts::Kind::text || !line.text.empty()) {
            explanation.lines.push_back(explain_line(known, line));
            if (const auto remark = larger_than_machine(line, hardware, scan.page_size)) {
                explanation.lines.back().remarks.push_back(*remark);
            }
        } else if (line.step == OneShotStep::distribution) {
            explanation.lines.push_back(explain_no_distribution(scan.profile));
        }
    }
    for (const MissingLine& missing : computed.missing) {
        explanation.lines.push_back(explain_missing(missing));
    }
    explanation.verdict =
        judge(recordings, scan, computed, explanation.coverage, explanation.counts);
    explanation.remarks =
        remarks_on(recordings, explanation, find_flaws(recordings, scan, computed));
    return explanation;
}
