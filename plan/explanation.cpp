#include "plan/explanation.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <limits>

#include "plan/printable.h"

namespace {

constexpr std::int64_t of_page = -1;
constexpr std::uint64_t most_int32 = std::numeric_limits<std::int32_t>::max();
constexpr std::uint64_t no_limit = std::numeric_limits<std::int64_t>::max();
constexpr std::uint64_t first_negative = std::uint64_t{1} << 63;

// How a line's numbers read: so many bytes each, or so many things.
struct LineUnit {
    const char* line;
    std::int64_t unit_bytes;
    const char* things;  // where the unit is no size
};

constexpr LineUnit line_units[] = {
    {"NUMPROC", 0, "processes"},
    {"AVNUMPROC", 0, "processes on average"},
    {"NUMTCPSOCK", 0, "TCP sockets"},
    {"NUMOTHERSOCK", 0, "other sockets"},
    {"NUMPTY", 0, "terminals"},
    {"NUMFILE", 0, "open files"},
    {"DCACHESIZE", 1, ""},
    {"KMEMSIZE", 1, ""},
    {"TCPSNDBUF", 1, ""},
    {"TCPRCVBUF", 1, ""},
    {"OTHERSOCKBUF", 1, ""},
    {"DGRAMRCVBUF", 1, ""},
    {"PRIVVMPAGES", of_page, ""},
    {"VMGUARPAGES", of_page, ""},
    {"OOMGUARPAGES", of_page, ""},
    {"LOCKEDPAGES", of_page, ""},
    {"SHMPAGES", of_page, ""},
    {"NUMFLOCK", 0, "file locks"},
    {"NUMSIGINFO", 0, "queued signals"},
    {"NUMIPTENT", 0, "packet filter rules and routes"},
    {"DISKSPACE", 1024, ""},
    {"DISKINODES", 0, "inodes"},
    {"CPUUNITS", 0, "shares of the processors"},
    {"QUOTATIME", 0, "seconds over a soft limit"},
    {"QUOTAUGIDLIMIT", 0, "users and groups with quotas"},
    {"SLMMEMORYLIMIT", 1, ""},
};

std::string amount_text(std::uint64_t number, const LineUnit& unit, std::int32_t page_size) {
    if (number >= first_negative) {
        return "a negative number";
    }
    if (unit.unit_bytes == 0) {
        return std::to_string(number) + " " + unit.things;
    }
    const std::int64_t bytes = unit.unit_bytes == of_page ? page_size : unit.unit_bytes;
    return size_text(static_cast<double>(number) * static_cast<double>(bytes));
}

// A limit that no measurement changes is none.
bool has_own_limit(const ConfigLine& line) {
    return line.limit != line.barrier && (line.limit != most_int32 || line.margin > 1.0);
}

std::string meaning_of(const ConfigLine& line, std::int32_t page_size) {
    if (line.barrier == 0 && line.limit == no_limit) {
        return "not limited";
    }
    const auto unit =
        std::find_if(std::begin(line_units), std::end(line_units),
                     [&](const LineUnit& row) { return line.name == std::string(row.line); });
    if (unit == std::end(line_units)) {
        return {};
    }
    const std::string barrier = amount_text(line.barrier, *unit, page_size);
    return has_own_limit(line)
               ? barrier + ", " + amount_text(line.limit, *unit, page_size) + " for a moment"
               : barrier;
}

std::string value_of(const ConfigLine& line) {
    switch (line.kind) {
        case ConfigLine::Kind::pair:
            return std::to_string(line.barrier) + ":" + std::to_string(line.limit);
        case ConfigLine::Kind::number:
            return std::to_string(line.limit);
        case ConfigLine::Kind::text:
            break;
    }
    return line.text;
}

std::optional<float> factor_of(const CountRule& rule, ConfigScales scales) {
    switch (rule.factor) {
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

// The line that a rule gives its size.
std::string line_of(const CountRule& rule, const std::vector<CountStory>& counts) {
    const std::string count = rule.count;
    const auto story = std::find_if(counts.begin(), counts.end(),
                                    [&](const CountStory& row) { return row.name == count; });
    if (story != counts.end()) {
        return story->line;
    }
    std::string line = count;  // the others are called like their lines
    std::transform(line.begin(), line.end(), line.begin(), [](char letter) {
        return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    });
    return line;
}

std::string seen_text(const CountStory& count) {
    if (!count.peak) {
        return {};
    }
    const std::string number = std::to_string(count.peak->value);
    if (count.unit_bytes == 0 || count.peak->value < 0) {
        return number + " " + count.label;
    }
    const auto bytes = static_cast<double>(count.unit_bytes) * count.peak->value;
    return size_text(bytes) + " (" + number + ")";
}

class Teller {
public:
    Teller(const CombinedScan& scan, ConfigScales scales, std::vector<CountStory>& counts)
        : scan_(scan), scales_(scales), counts_(counts) {}

    LineStory tell(const ConfigLine& line);

private:
    void tell_own_count(const CountRule& rule, const ConfigLine& line, LineStory& story);
    void tell_average(LineStory& story) const;
    void tell_quotas(LineStory& story) const;
    void tell_from_others(const ConfigLine& line, LineStory& story) const;
    void add_overflow_remarks(const ConfigLine& line, LineStory& story) const;

    const CombinedScan& scan_;
    const ConfigScales scales_;
    std::vector<CountStory>& counts_;
};

void Teller::tell_from_others(const ConfigLine& line, LineStory& story) const {
    story.basis = Basis::derived;
    for (const CountRule* rule : line.sources) {
        const std::string source = line_of(*rule, counts_);
        if (source != story.name) {
            story.made_from.push_back(source);
        }
    }
}

void Teller::tell_average(LineStory& story) const {
    story.count = "avnumproc";
    const bool is_floor =
        scales_.memory * scan_.profile.avnumproc <= static_cast<float>(*story.floor);
    story.basis = is_floor ? Basis::floor : Basis::measurement;
    char text[32];
    std::snprintf(text, sizeof(text), "%.1f processes on average", scan_.profile.avnumproc);
    story.seen = text;
}

void Teller::tell_quotas(LineStory& story) const {
    story.basis = Basis::finding;
    if (scan_.profile.quotaugidlimit == 0) {
        story.floor.reset();
        story.factor.reset();
    }
}

void Teller::tell_own_count(const CountRule& rule, const ConfigLine& line, LineStory& story) {
    const auto count = std::find_if(counts_.begin(), counts_.end(),
                                    [&](const CountStory& row) { return row.name == rule.count; });
    if (count == counts_.end()) {  // never counted
        story.basis = Basis::fixed;
        return;
    }
    count->floor = story.floor;
    story.count = count->name;
    story.peak = count->peak;
    story.seen = seen_text(*count);
    if (story.count == "diskinodes" && scan_.reiserfs_found) {
        story.basis = Basis::finding;
        story.remarks.emplace_back("reiserfs counts no inodes: the number is a guess");
        return;
    }
    const std::int32_t own = apply_rule(rule, scan_.profile.*rule.measured, scales_);
    if (own < static_cast<std::int64_t>(line.barrier)) {
        // More open files than were seen: for sockets and terminals, or for the processes.
        tell_from_others(line, story);
    } else if (story.floor && own == apply_rule(rule, 0, scales_)) {
        story.basis = Basis::floor;
    } else {
        story.basis = Basis::measurement;
        story.remarks = count->remarks;
    }
}

void Teller::add_overflow_remarks(const ConfigLine& line, LineStory& story) const {
    if (line.kind == ConfigLine::Kind::text) {
        return;
    }
    if (line.wrapped || line.barrier >= first_negative) {
        story.remarks.emplace_back("the number did not fit into 32 bits and wrapped around");
    } else if (line.barrier == most_int32 || (line.limit == most_int32 && has_own_limit(line))) {
        story.remarks.emplace_back("the number was clamped to the largest of 32 bits");
    }
}

LineStory Teller::tell(const ConfigLine& line) {
    LineStory story;
    story.name = line.name;
    story.value = value_of(line);
    story.meaning = meaning_of(line, scan_.page_size);
    if (line.margin > 1.0) {
        story.margin = line.margin;
    }
    if (line.kind == ConfigLine::Kind::text) {
        story.basis = story.name == "SLMMODE" ? Basis::fixed : Basis::finding;
    } else if (!line.sources.empty()) {
        const CountRule& rule = *line.sources.front();
        if (line_of(rule, counts_) != story.name) {
            tell_from_others(line, story);
        } else {
            story.factor = factor_of(rule, scales_);
            if (rule.floor != no_floor) {
                story.floor = rule.floor;
            }
            const std::string count = rule.count;
            if (count == "avnumproc") {
                tell_average(story);
            } else if (count == "quotaugidlimit") {
                tell_quotas(story);
            } else {
                tell_own_count(rule, line, story);
            }
        }
    }
    if (story.basis == Basis::floor && !line.sources.front()->floor_is_scaled) {
        story.factor.reset();
    }
    add_overflow_remarks(line, story);
    return story;
}

LineStory tell_missing(const MissingLine& missing) {
    LineStory story;
    story.name = missing.name;
    story.basis = Basis::missing;
    story.remarks.push_back(missing.reason);
    return story;
}

}  // namespace

const char* name_of(Basis basis) {
    constexpr std::array<const char*, 6> names = {"measurement", "floor", "derived",
                                                  "finding",     "fixed", "missing"};
    return names[static_cast<std::size_t>(basis)];
}

Explanation explain(const std::vector<NamedRecording>& recordings, const CombinedScan& scan,
                    ConfigScales scales) {
    Explanation explanation;
    explanation.counts = tell_counts(recordings, scan.page_size);
    explanation.coverage = measure_coverage(recordings);
    const ComputedConfig computed = compute_known_lines(scan, scales);
    Teller teller(scan, scales, explanation.counts);
    for (const ConfigLine& line : computed.lines) {
        if (line.kind != ConfigLine::Kind::text || !line.text.empty()) {
            explanation.lines.push_back(teller.tell(line));
        }
    }
    for (const MissingLine& missing : computed.missing) {
        explanation.lines.push_back(tell_missing(missing));
    }
    explanation.remarks = find_flaws(recordings, scan, computed);
    return explanation;
}
