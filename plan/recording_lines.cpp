// Writing the lines of a recording.
#include <nlohmann/json.hpp>

#include "plan/json_text.h"
#include "plan/recording.h"
#include "plan/recording_names.h"

namespace {

using nlohmann::ordered_json;
using namespace recording_names;

ordered_json interface_to_json(const NetIface& iface) {
    return {{name_name, text_to_json(iface.ifname)},
            {kind_name, iface.if_type},
            {addresses_name, texts_to_json(iface.ip_addresses)},
            {dhcp_name, iface.dhcp}};
}

ordered_json warning_to_json(const TarnACalculateHWNodeWarning& warning) {
    return {{code_name, warning.code}, {message_name, text_to_json(warning.message)}};
}

ordered_json exclude_to_json(const TarnAExcludePath& exclude) {
    return {{flag_name, exclude.flag}, {path_name, text_to_json(exclude.path)}};
}

ordered_json failure_to_json(const StepFailure& failure) {
    return {{step_name, name_of(failure.step)}, {text_name, text_to_json(failure.text)}};
}

void add_spans(ordered_json& line, const ScanSpans& spans) {
    line[time_name] = spans.time;
    line[period_name] = spans.period;
}

std::string finished(const ordered_json& line) {
    return line.dump() + "\n";
}

}  // namespace

const char* name_of(OneShotStep step) {
    switch (step) {
        case OneShotStep::quotas:
            return "quotas";
        case OneShotStep::interfaces:
            return "interfaces";
        case OneShotStep::distribution:
            return "distribution";
        case OneShotStep::host_name:
            return "host name";
        case OneShotStep::resolver:
            return "resolver";
        case OneShotStep::mounts:
            break;
    }
    return "mounts";
}

ordered_json findings_to_json(const Findings& findings) {
    ordered_json object;
    object[quota_ids_name] = findings.quotaugidlimit;
    object[interfaces_name] = list_to_json(findings.ifaces, interface_to_json);
    object[distribution_name] = text_to_json(findings.distribution);
    object[hostname_name] = text_to_json(findings.hostname);
    object[nameservers_name] = texts_to_json(findings.ns_attrs.nameservers);
    object[search_domains_name] = texts_to_json(findings.ns_attrs.search_domains);
    object[warnings_name] = list_to_json(findings.notes.warnings, warning_to_json);
    object[excludes_name] = list_to_json(findings.notes.excludes, exclude_to_json);
    object[nfs_name] = findings.nfs_found;
    object[reiserfs_name] = findings.reiserfs_found;
    object[failures_name] = list_to_json(findings.failures, failure_to_json);
    object[messages_name] = text_to_json(findings.messages);
    return object;
}

// {"recording_format":1,"version":"1.0","host":"web1","machine":"x86_64","kernel":"6.1.0",
//  "page_size":4096,"start":"2026-03-12T14:05:00Z","scan_time":604800,"scan_period":300}
std::string header_line(const RecordingHeader& header) {
    ordered_json line;
    line[format_name] = recording_format;
    line[version_name] = text_to_json(header.version);
    line[host_name] = text_to_json(header.host);
    line[machine_name] = text_to_json(header.machine);
    line[kernel_name] = text_to_json(header.kernel);
    line[page_size_name] = header.page_size;
    line[start_name] = utc_text(header.start);
    add_spans(line, header.spans);
    return finished(line);
}

std::string continuation_line(const Continuation& continuation) {
    ordered_json line;
    line[continued_name] = true;
    line[at_name] = continuation.at_ms;
    line[version_name] = text_to_json(continuation.version);
    line[kernel_name] = text_to_json(continuation.kernel);
    add_spans(line, continuation.spans);
    return finished(line);
}

// {"pass":1,"at_ms":0,"took_ms":131,"counts":{"numproc":120,"numtcpsock":40,...}}
std::string pass_line(const RecordedPass& pass) {
    ordered_json counts = ordered_json::object();
    for (std::size_t i = 0; i < sample_fields.size(); ++i) {
        if (pass.taken.test(i)) {
            counts[sample_fields[i].name] = pass.counts.*sample_fields[i].count;
        }
    }
    ordered_json line;
    line[pass_name] = pass.number;
    line[at_name] = pass.at_ms;
    line[took_name] = pass.took_ms;
    line[counts_name] = std::move(counts);
    if (pass.failure) {
        line[failed_name] = text_to_json(*pass.failure);
    }
    return finished(line);
}

std::string summary_line(const Summary& summary) {
    ordered_json line;
    line[at_name] = summary.at_ms;
    line[interrupted_name] = summary.interrupted;
    line[findings_name] = findings_to_json(summary.findings);
    return finished(line);
}
