#include "plan/recording/combined_scan.h"

#include <algorithm>
#include <optional>

#include "kiln/strings.h"
#include "plan/text/printable.h"

namespace {

constexpr const char* no_findings = "there is no recording with its last line";

// Whether the second recording can be one of the host of the first.
Kiln::Done check_same_host(const NamedRecording& first, const NamedRecording& second) {
    const RecordingHeader& a = first.recording.header;
    const RecordingHeader& b = second.recording.header;
    const std::string names = first.name + " and " + second.name;
    if (a.host != b.host) {
        return Kiln::Reason{names + " are of two hosts: " + a.host + " and " + b.host};
    }
    if (a.machine != b.machine) {
        return Kiln::Reason{names + " are of two machines: " + a.machine + " and " + b.machine};
    }
    if (a.page_size != b.page_size) {
        return Kiln::Reason{names + " differ in the page size: " + std::to_string(a.page_size) +
                            " and " + std::to_string(b.page_size)};
    }
    return {};
}

// A pass that failed before it counted anything is none for the average.
void keep_passes(const std::vector<TimedPass>& passes, CombinedScan& scan) {
    std::int32_t pass_no = 0;
    for (const TimedPass& timed : passes) {
        if (timed.pass->taken.any()) {
            Sample sample;
            sample.counts = timed.pass->counts;
            sample.taken = timed.pass->taken;
            keep_largest(scan.profile, sample, ++pass_no);
            scan.seen |= timed.pass->taken;
        }
    }
}

// Of two last lines of one moment, that of the recording that was named later.
const NamedRecording* newest_with_findings(const std::vector<NamedRecording>& recordings) {
    const NamedRecording* newest = nullptr;
    const auto time_of = [](const Recording& recording) {
        return recording.time_ms(recording.summary->at_ms);
    };
    for (const NamedRecording& named : recordings) {
        if (named.recording.summary &&
            (newest == nullptr || time_of(named.recording) >= time_of(newest->recording))) {
            newest = &named;
        }
    }
    return newest;
}

void keep_findings(const Findings& findings, CombinedScan& scan) {
    scan.has_findings = true;
    scan.failures = findings.failures;
    scan.messages = findings.messages;
    scan.profile.quotaugidlimit = findings.quotaugidlimit;
    scan.profile.ifaces = findings.ifaces;
    scan.profile.distribution = findings.distribution;
    scan.profile.hostname = findings.hostname;
    scan.profile.ns_attrs = findings.ns_attrs;
    scan.profile.notes = findings.notes;
    scan.profile.nfs_used = findings.nfs_found;
    scan.reiserfs_found = findings.reiserfs_found;
    // Such a file system counts no inodes: the calculator's guess stands for what the passes saw.
    if (findings.reiserfs_found) {
        scan.profile.diskinodes = reiserfs_diskinodes;
    }
}

// Why the step's line cannot be computed; nothing when it can.
std::optional<std::string> missing_finding(const CombinedScan& scan, OneShotStep step) {
    if (!scan.has_findings) {
        // The first line of a recording has the host name as well.
        return step == OneShotStep::host_name ? std::nullopt
                                              : std::optional<std::string>(no_findings);
    }
    for (const StepFailure& failure : scan.failures) {
        if (failure.step == step) {
            return failure.text;
        }
    }
    return {};
}

// What is no count of the passes is not missed.
bool was_seen(const CombinedScan& scan, const Count& count) {
    const std::size_t place = place_of(count.field);
    return place == sampled_count_number || scan.seen.test(place);
}

std::optional<std::string> missing_count(const CombinedScan& scan, const ConfigLine& line) {
    for (const Count* source : line.sources) {
        if (!was_seen(scan, *source)) {
            return std::string("no pass counted ") + source->name;
        }
    }
    return {};
}

std::optional<std::string> why_missing(const CombinedScan& scan, const ConfigLine& line) {
    if (has_control_characters(line.text)) {  // it would be another line, or none
        return "its text has a control character: " + printable(line.text);
    }
    return line.step ? missing_finding(scan, *line.step) : missing_count(scan, line);
}

// Nothing when no pass failed.
std::optional<std::string> failed_passes(const NamedRecording& named) {
    const std::vector<RecordedPass>& passes = named.recording.passes;
    const auto failed = [](const RecordedPass& pass) { return pass.failure.has_value(); };
    const auto first = std::find_if(passes.begin(), passes.end(), failed);
    if (first == passes.end()) {
        return {};
    }
    return named.name +
           ": passes that failed: " + grouped(std::count_if(passes.begin(), passes.end(), failed)) +
           " of " + grouped(static_cast<std::int64_t>(passes.size())) + ", the first is pass " +
           std::to_string(first->number) + ": " +
           Kiln::join(" ", Kiln::split("\n", *first->failure, 0));
}

}  // namespace

std::vector<TimedPass> passes_by_time(const std::vector<NamedRecording>& recordings) {
    std::vector<TimedPass> passes;
    for (std::size_t i = 0; i < recordings.size(); ++i) {
        const Recording& recording = recordings[i].recording;
        for (const RecordedPass& pass : recording.passes) {
            passes.push_back({{recording.time_ms(pass.at_ms), pass.at_ms, pass.number, i}, &pass});
        }
    }
    std::stable_sort(passes.begin(), passes.end(), [](const TimedPass& a, const TimedPass& b) {
        return a.moment.time_ms < b.moment.time_ms;
    });
    return passes;
}

Kiln::Result<CombinedScan> combine(const std::vector<NamedRecording>& recordings) {
    CombinedScan scan;
    for (const NamedRecording& named : recordings) {
        if (const Kiln::Done same = check_same_host(recordings.front(), named); !same) {
            return Kiln::Reason{same.reason()};
        }
        scan.page_size = named.recording.header.page_size;
        scan.profile.hostname = named.recording.header.host;
    }
    keep_passes(passes_by_time(recordings), scan);
    if (scan.seen.none()) {
        return Kiln::Reason{"there is no pass that counted anything"};
    }
    if (const NamedRecording* newest = newest_with_findings(recordings)) {
        keep_findings(newest->recording.summary->findings, scan);
    }
    return scan;
}

ComputedConfig compute_known_lines(const CombinedScan& scan, ConfigScales scales) {
    ComputedConfig computed;
    for (ConfigLine& line : compute_config(scan.profile, scales, scan.page_size)) {
        if (const std::optional<std::string> reason = why_missing(scan, line)) {
            computed.missing.push_back({line.name, *reason, line.step && !scan.has_findings});
        } else {
            computed.lines.push_back(std::move(line));
        }
    }
    return computed;
}

const ConfigLine* find_line(const std::vector<ConfigLine>& lines, const std::string& name) {
    const auto found = std::find_if(lines.begin(), lines.end(),
                                    [&](const ConfigLine& line) { return name == line.name; });
    return found == lines.end() ? nullptr : &*found;
}

void add_by_reason(const std::string& line, const std::string& reason,
                   std::vector<LinesOfReason>& groups) {
    const auto same = std::find_if(groups.begin(), groups.end(), [&](const LinesOfReason& group) {
        return group.reason == reason;
    });
    if (same == groups.end()) {
        groups.push_back({{line}, reason});
    } else {
        same->lines.push_back(line);
    }
}

std::vector<std::string> missing_by_reason(const std::vector<MissingLine>& missing) {
    std::vector<LinesOfReason> groups;
    for (const MissingLine& line : missing) {
        add_by_reason(line.name, line.reason, groups);
    }
    std::vector<std::string> texts;
    for (const LinesOfReason& group : groups) {
        texts.push_back("left out: " + Kiln::join(", ", group.lines) + " (" + group.reason + ")");
    }
    return texts;
}

bool is_odd_for_a_shell(const ConfigLine& line) {
    return line.text.find_first_of("\"$`\\") != std::string::npos;
}

std::vector<std::string> find_flaws(const std::vector<NamedRecording>& recordings,
                                    const CombinedScan& scan, const ComputedConfig& computed) {
    std::vector<std::string> flaws = missing_by_reason(computed.missing);
    if (!scan.has_findings) {
        flaws.push_back(std::string("warnings and paths to exclude are not known (") + no_findings +
                        ")");
    }
    for (const ConfigLine& line : computed.lines) {
        if (is_odd_for_a_shell(line)) {
            flaws.push_back(std::string(line.name) + " has what a shell acts on: " + line.text);
        }
    }
    for (const NamedRecording& named : recordings) {
        if (const std::optional<std::string> failed = failed_passes(named)) {
            flaws.push_back(*failed);
        }
    }
    return flaws;
}
