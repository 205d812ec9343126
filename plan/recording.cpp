// Reading recordings. The lines are written in recording_lines.cpp.
#include "plan/recording.h"

#include <algorithm>
#include <ctime>
#include <limits>

#include "plan/json_text.h"
#include "plan/recording_names.h"

namespace {

using nlohmann::json;
using namespace recording_names;

constexpr std::int32_t most_int32 = std::numeric_limits<std::int32_t>::max();
constexpr std::int64_t most_milliseconds = std::int64_t{1} << 41;  // longer than any scan time

std::int64_t milliseconds_member(const json& object, const char* name) {
    return number_member(object, name, 0, most_milliseconds);
}

std::int64_t time_member(const json& object, const char* name) {
    const std::string text = text_member(object, name);
    std::tm parts = {};
    const char* end = strptime(text.c_str(), utc_format, &parts);
    const std::int64_t seconds = timegm(&parts);
    if (end == nullptr || utc_text(seconds) != text) {
        throw JsonDamage("\"" + std::string(name) + "\" is not a time");
    }
    return seconds;
}

ScanSpans read_spans(const json& object) {
    ScanSpans spans;
    spans.time = static_cast<std::int32_t>(number_member(object, time_name, 0, most_int32));
    spans.period = static_cast<std::int32_t>(number_member(object, period_name, 0, most_int32));
    return spans;
}

RecordingHeader read_header(const json& line) {
    if (!line.is_object() || !line.contains(format_name)) {
        throw JsonDamage("this is no recording");
    }
    if (count_member(line, format_name) != recording_format) {
        throw JsonDamage("the format is another one than " + std::to_string(recording_format));
    }
    RecordingHeader header;
    header.version = text_member(line, version_name);
    header.host = text_member(line, host_name);
    header.machine = text_member(line, machine_name);
    header.kernel = text_member(line, kernel_name);
    header.page_size =
        static_cast<std::int32_t>(number_member(line, page_size_name, 1, most_int32));
    header.start = time_member(line, start_name);
    header.spans = read_spans(line);
    return header;
}

Continuation read_continuation(const json& line) {
    Continuation continuation;
    continuation.at_ms = milliseconds_member(line, at_name);
    continuation.version = text_member(line, version_name);
    continuation.kernel = text_member(line, kernel_name);
    continuation.spans = read_spans(line);
    return continuation;
}

void read_counts(const json& counts, RecordedPass& pass) {
    if (!counts.is_object()) {
        throw JsonDamage("the counts are missing");
    }
    for (std::size_t i = 0; i < sample_fields.size(); ++i) {
        if (counts.contains(sample_fields[i].name)) {
            pass.counts.*sample_fields[i].count = count_member(counts, sample_fields[i].name);
            pass.taken.set(i);
        }
    }
}

RecordedPass read_pass(const json& line) {
    RecordedPass pass;
    pass.number = static_cast<std::int32_t>(number_member(line, pass_name, 1, most_int32));
    pass.at_ms = milliseconds_member(line, at_name);
    pass.took_ms = milliseconds_member(line, took_name);
    read_counts(member(line, counts_name), pass);
    if (line.contains(failed_name)) {
        pass.failure = text_member(line, failed_name);
    } else if (!pass.taken.all()) {
        throw JsonDamage("a count is missing from a pass that did not fail");
    }
    return pass;
}

std::vector<std::string> read_texts(const json& object, const char* name) {
    std::vector<std::string> texts;
    for (const json& text : array_member(object, name)) {
        texts.push_back(text_from_json(text));
    }
    return texts;
}

NetIfaceList read_interfaces(const json& object) {
    NetIfaceList ifaces;
    for (const json& entry : array_member(object, interfaces_name)) {
        NetIface iface;
        iface.if_type = static_cast<std::uint32_t>(
            number_member(entry, kind_name, 0, std::numeric_limits<std::uint32_t>::max()));
        iface.ifname = text_member(entry, name_name);
        iface.ip_addresses = read_texts(entry, addresses_name);
        iface.dhcp = flag_member(entry, dhcp_name);
        ifaces.push_back(iface);
    }
    return ifaces;
}

TarnACalculateHWNodeNotes read_notes(const json& object) {
    TarnACalculateHWNodeNotes notes;
    for (const json& entry : array_member(object, warnings_name)) {
        notes.warnings.push_back(
            {count_member(entry, code_name), text_member(entry, message_name)});
    }
    for (const json& entry : array_member(object, excludes_name)) {
        notes.excludes.push_back({flag_member(entry, flag_name), text_member(entry, path_name)});
    }
    return notes;
}

OneShotStep step_of(const std::string& name) {
    for (std::size_t i = 0; i < one_shot_step_count; ++i) {
        const auto step = static_cast<OneShotStep>(i);
        if (name == name_of(step)) {
            return step;
        }
    }
    throw JsonDamage("a step that failed is not known");
}

std::vector<StepFailure> read_failures(const json& object) {
    std::vector<StepFailure> failures;
    for (const json& entry : array_member(object, failures_name)) {
        failures.push_back({step_of(text_member(entry, step_name)), text_member(entry, text_name)});
    }
    return failures;
}

}  // namespace

Findings findings_from_json(const json& object) {
    Findings findings;
    findings.quotaugidlimit = count_member(object, quota_ids_name);
    findings.ifaces = read_interfaces(object);
    findings.distribution = text_member(object, distribution_name);
    findings.hostname = text_member(object, hostname_name);
    findings.ns_attrs.nameservers = read_texts(object, nameservers_name);
    findings.ns_attrs.search_domains = read_texts(object, search_domains_name);
    findings.notes = read_notes(object);
    findings.nfs_found = flag_member(object, nfs_name);
    findings.reiserfs_found = flag_member(object, reiserfs_name);
    findings.failures = read_failures(object);
    findings.messages = text_member(object, messages_name);
    return findings;
}

namespace {

Summary read_summary(const json& line) {
    Summary summary;
    summary.at_ms = milliseconds_member(line, at_name);
    summary.interrupted = flag_member(line, interrupted_name);
    summary.findings = findings_from_json(member(line, findings_name));
    return summary;
}

// A line that is none of these was added by a later program.
void read_line(const json& line, Recording& recording) {
    if (!line.is_object()) {
        throw JsonDamage("this is no JSON object");
    }
    recording.summary_is_last = recording.summary_is_last && !line.contains(pass_name);
    if (line.contains(pass_name)) {
        recording.passes.push_back(read_pass(line));
    } else if (line.contains(findings_name)) {
        recording.summary = read_summary(line);
        recording.summary_is_last = true;
    } else if (line.contains(continued_name)) {
        recording.continuations.push_back(read_continuation(line));
    }
}

json parse_line(std::string_view text) {
    json line = json::parse(text.begin(), text.end(), nullptr, false);
    if (line.is_discarded()) {
        throw JsonDamage("this is not JSON");
    }
    return line;
}

}  // namespace

Kiln::Result<Recording> parse_recording(std::string_view text) {
    Recording recording;
    std::size_t number = 0;
    try {
        for (std::size_t end = text.find('\n'); end != std::string_view::npos;
             end = text.find('\n', recording.whole_size)) {
            ++number;
            const json line =
                parse_line(text.substr(recording.whole_size, end - recording.whole_size));
            if (number == 1) {
                recording.header = read_header(line);
            } else {
                read_line(line, recording);
            }
            recording.whole_size = end + 1;
        }
    } catch (const std::exception& damage) {
        return Kiln::Reason{"line " + std::to_string(number) + ": " + damage.what()};
    }
    if (number == 0) {
        return Kiln::Reason{is_torn_header(text) ? "its first line was never written"
                                                 : "line 1: this is no recording"};
    }
    recording.torn = recording.whole_size < text.size();
    return recording;
}

bool is_torn_header(std::string_view text) {
    const std::string begin = "{\"" + std::string(format_name) + "\":";
    const std::size_t size = std::min(text.size(), begin.size());
    return text.find('\n') == std::string_view::npos &&
           text.substr(0, size) == begin.substr(0, size);
}

ScanSpans Recording::spans() const {
    return continuations.empty() ? header.spans : continuations.back().spans;
}

std::int64_t Recording::last_ms() const {
    std::int64_t last = summary ? summary->at_ms : 0;
    if (!continuations.empty()) {
        last = std::max(last, continuations.back().at_ms);
    }
    if (!passes.empty()) {
        last = std::max(last, passes.back().at_ms + passes.back().took_ms);
    }
    return last;
}

std::string utc_text(std::int64_t seconds_since_epoch) {
    const std::time_t seconds = seconds_since_epoch;
    std::tm parts = {};
    char text[64] = "";
    if (gmtime_r(&seconds, &parts) != nullptr) {
        std::strftime(text, sizeof(text), utc_format, &parts);
    }
    return text;
}
