#include "plan/limits/limits.h"

#include <algorithm>
#include <cmath>

#include "plan/explain/coverage.h"
#include "plan/explain/usage_summary.h"
#include "plan/limits/decimal.h"
#include "plan/limits/host_text.h"
#include "plan/text/printable.h"
#include "plan/text/utc.h"

namespace {

enum class Statistic { peak, percentile };
enum class Scale { none, memory, cpu };

// Cores are reckoned in millionths, everything else in what the usage counts.
constexpr double millionths = 1e6;

struct LimitRule {
    UsageQuantity source;
    Statistic statistic;
    Scale scale;
    std::int64_t unit;  // of the limit, in what the source counts; rounded up to a whole one
    std::int64_t floor;
    std::int64_t most;
    const char* unit_text;
};

constexpr std::int64_t kib_in_mib = 1024;
constexpr std::int64_t tenth_of_core = 100000;  // millionths
constexpr std::int64_t hundredth_of_core = 10000;
constexpr std::int64_t most_tasks = 4194304;  // more than that the kernel refuses
constexpr std::int64_t most_tenths = 1000000;
constexpr std::int64_t most_descriptors =
    1073741816;  // the most that a kernel can be told to allow

// The table of limits, in the order of LimitKind.
constexpr LimitRule rules[] = {
    {UsageQuantity::memory, Statistic::peak, Scale::memory, kib_in_mib, 64, most_mib, " MiB"},
    {UsageQuantity::swap, Statistic::peak, Scale::memory, kib_in_mib, 0, most_mib, " MiB"},
    {UsageQuantity::tasks, Statistic::peak, Scale::memory, 1, 512, most_tasks, ""},
    {UsageQuantity::cores, Statistic::peak, Scale::cpu, tenth_of_core, 1, most_tenths,
     " tenth of a core"},
    {UsageQuantity::cores, Statistic::percentile, Scale::cpu, hundredth_of_core, 1,
     10 * most_tenths, " hundredth of a core"},
    {UsageQuantity::descriptors, Statistic::peak, Scale::memory, 1, 1024, most_descriptors, ""},
    {UsageQuantity::locked, Statistic::peak, Scale::memory, kib_in_mib, 8, most_mib, " MiB"},
    {UsageQuantity::shm, Statistic::peak, Scale::none, kib_in_mib, 64, most_mib, " MiB"},
};
static_assert(std::size(rules) == limit_kind_count, "a row for each");

constexpr std::int64_t default_nr_open = 1048576;

// "95th"
std::string ordinal(int number) {
    const int last = number % 10;
    const bool is_teen = number / 10 % 10 == 1;
    const char* const endings[] = {"th", "st", "nd", "rd"};
    return std::to_string(number) + (is_teen || last > 3 ? "th" : endings[last]);
}

// "5 minutes", of more than 0 seconds
std::string span_text(std::int32_t seconds) {
    constexpr std::pair<std::int32_t, const char*> units[] = {
        {86400, " day"}, {3600, " hour"}, {60, " minute"}, {1, " second"}};
    const auto& [size, name] = *std::find_if(std::begin(units), std::end(units),
                                             [&](auto& unit) { return seconds % unit.first == 0; });
    return std::to_string(seconds / size) + name + (seconds == size ? "" : "s");
}

// Within what an integer of the source's unit can be; cores in millionths.
std::int64_t whole_number(UsageQuantity source, double value) {
    constexpr double most = 9e18;
    const double number = source == UsageQuantity::cores ? value * millionths : value;
    return std::llround(std::min(number, most));
}

// "7,500,000 KiB (7.2 GiB)"
std::string kib_text(std::uint64_t kib) {
    return grouped(static_cast<std::int64_t>(kib)) + " KiB (" +
           size_text(static_cast<double>(kib) * 1024) + ")";
}

std::string count_text(std::uint64_t number) {
    return grouped(static_cast<std::int64_t>(number));
}

class LimitWork {
public:
    LimitWork(const std::vector<NamedRecording>& recordings, const CombinedScan& scan,
              const LimitOptions& options)
        : recordings_(recordings),
          scan_(scan),
          options_(options),
          factors_{Decimal(), decimal_of(static_cast<double>(options.scales.memory)),
                   decimal_of(options.cpu_scale)} {}

    LimitSheet run() {
        add_heading();
        add_limits();
        add_own_lines();
        add_findings();
        return std::move(sheet_);
    }

private:
    void complain(const std::string& text) { sheet_.complaints.push_back(text); }

    const Decimal& factor_of(const LimitRule& rule) const {
        return factors_[static_cast<std::size_t>(rule.scale)];
    }

    // "2026-03-12 14:05 UTC, pass 13"
    std::string moment_text(const UsageValue& value) const {
        std::string text = minute_text(value.time_ms) + " UTC, pass " + std::to_string(value.pass);
        if (recordings_.size() > 1) {
            text += " of recording " + std::to_string(value.recording + 1);
        }
        return text;
    }

    std::string source_text(const LimitRule& rule, const UsageSummary& summary) const {
        std::string text;
        if (rule.statistic == Statistic::peak) {
            text = "peak of " + usage_text(rule.source, summary.peak->value);
            if (!summary.peak->process.empty()) {
                text += " of one process (" + printable(summary.peak->process) + ")";
            }
            text += ", " + moment_text(*summary.peak);
        } else {
            text = ordinal(options_.cpu_percentile) + " percentile of " +
                   grouped(static_cast<std::int64_t>(summary.values)) +
                   (summary.values == 1 ? " value: " : " values: ") +
                   usage_text(rule.source, summary.percentile);
        }
        if (rule.scale != Scale::none) {
            text += ", times " + factor_of(rule).text();
        }
        return text;
    }

    Limit limit_of(const LimitRule& rule, const UsageSummary& summary) const {
        const double seen =
            rule.statistic == Statistic::peak ? summary.peak->value : summary.percentile;
        const std::int64_t needed =
            scaled_up(whole_number(rule.source, seen), factor_of(rule), rule.unit, rule.most);
        Limit limit = {std::max(needed, rule.floor), source_text(rule, summary)};
        if (needed < rule.floor) {
            limit.source = "at least " + grouped(rule.floor) + rule.unit_text + "; " + limit.source;
        } else if (needed == rule.most) {
            limit.source += ", cut to the most that there can be";
        }
        return limit;
    }

    void add_limits() {
        const UsageSeries series = usage_series(recordings_);
        // One sentence instead of one for each limit: an older program made the recording.
        if (std::all_of(series.begin(), series.end(),
                        [](const std::vector<UsageValue>& values) { return values.empty(); })) {
            complain(
                "no pass has usage: limits of memory, swap, tasks, processors, descriptors, locked "
                "memory and /dev/shm are left out (record again with this version)");
            return;
        }
        for (std::size_t i = 0; i < limit_kind_count; ++i) {
            const LimitRule& rule = rules[i];
            const bool is_cpu_limit = i == static_cast<std::size_t>(LimitKind::cpu);
            const UsageSummary summary = summarize_usage(
                series[static_cast<std::size_t>(rule.source)], options_.cpu_percentile);
            if (summary.peak && (!is_cpu_limit || options_.cpu_limit)) {
                sheet_.limits[i] = limit_of(rule, summary);
            } else if (!summary.peak &&
                       !is_cpu_limit) {  // what is said of the share holds for both
                complain(std::string("left out: the limit from ") + label_of(rule.source) +
                         (rule.source == UsageQuantity::cores
                              ? " (it takes two passes of one boot that have it)"
                              : " (no pass has it)"));
            }
        }
        std::optional<Limit>& descriptors =
            sheet_.limits[static_cast<std::size_t>(LimitKind::descriptors)];
        if (descriptors && descriptors->value > default_nr_open) {
            descriptors->source += "; raise fs.nr_open on the new host to as many first";
        }
    }

    void add_heading() {
        std::int32_t period = 0;
        std::int64_t with_usage = 0;
        std::int64_t passes = 0;
        for (const NamedRecording& named : recordings_) {
            const ScanSpans spans = named.recording.spans();
            period = std::max(period, std::min(spans.time, spans.period));
            for (const RecordedPass& pass : named.recording.passes) {
                ++passes;
                with_usage += pass.usage ? 1 : 0;
            }
        }
        sheet_.heading = {"limits for what " + printable(scan_.profile.hostname) +
                              " carries, by tarnhwplan " + TARN_VERSION,
                          coverage_in_words(measure_coverage(recordings_))};
        sheet_.notes = {
            "usage: in " + grouped(with_usage) + " of " + grouped(passes) + " passes",
            "page cache is not in the limit of memory: it is given back under pressure"};
        if (period > 0) {
            sheet_.notes.push_back("processors are averages over a period of " + span_text(period) +
                                   ", which hides shorter bursts");
        }
    }

    void add_own_lines() {
        const ComputedConfig computed = compute_known_lines(scan_, options_.scales);
        const auto take = [&](const char* name, const char* what,
                              std::string (*text)(std::uint64_t)) {
            constexpr std::uint64_t most_int32 = 2147483647;
            const ConfigLine* line = find_line(computed.lines, name);
            if (line != nullptr && line->limit < most_int32) {
                return std::optional(
                    OwnLimit{line->barrier, line->limit,
                             std::string(what) + ": " + text(line->barrier) + ", at most " +
                                 text(line->limit) + "; " + name + ", times " +
                                 decimal_of(static_cast<double>(options_.scales.disk)).text() +
                                 ", a tenth in reserve"});
            }
            if (line != nullptr) {  // clamped, or negative and so a number of twenty digits
                complain("left out: " + std::string(name) +
                         " (it did not fit into 32 bits: set it by hand)");
            }
            return std::optional<OwnLimit>();
        };
        sheet_.disk_kib = take("DISKSPACE", "disk", kib_text);
        sheet_.inodes = take("DISKINODES", "inodes", count_text);
        for (const MissingLine& line : computed.missing) {
            for (const char* const used : {"DISKSPACE", "DISKINODES", "HOSTNAME", "#IP_ADDRESS",
                                           "SEARCHDOMAIN", "NAMESERVER", "FEATURES"}) {
                if (line.name == used) {
                    complain("left out: " + line.name + " (" + line.reason + ")");
                }
            }
        }
    }

    void add_findings() {
        sheet_.host = scan_.profile;
        for (const NetIface& iface : sheet_.host.ifaces) {
            sheet_.addresses.insert(sheet_.addresses.end(), iface.ip_addresses.begin(),
                                    iface.ip_addresses.end());
        }
        sheet_.excludes_known =
            scan_.has_findings && std::none_of(scan_.failures.begin(), scan_.failures.end(),
                                               [](const StepFailure& failure) {
                                                   return failure.step == OneShotStep::mounts;
                                               });
        for (const TarnAExcludePath& exclude : sheet_.host.notes.excludes) {
            const std::optional<std::string> directory = directory_of_contents(exclude.path);
            if (exclude.flag && directory) {
                sheet_.mounts.push_back(*directory);
            }
        }
    }

    const std::vector<NamedRecording>& recordings_;
    const CombinedScan& scan_;
    const LimitOptions& options_;
    const std::array<Decimal, 3> factors_;  // in the order of Scale
    LimitSheet sheet_;
};

}  // namespace

LimitSheet work_out_limits(const std::vector<NamedRecording>& recordings, const CombinedScan& scan,
                           const LimitOptions& options) {
    return LimitWork(recordings, scan, options).run();
}
