// What the parts of a recording are made of: every member with its name and what it may be, said
// once. The reader and the writer in format.cpp both walk through it, with a visitor that takes
// a name and a value, which is const for the writer.
#pragma once

#include <cstdint>
#include <limits>
#include <type_traits>

#include "plan/recording/recording.h"

// What a whole number may be; without one it is any number of its type.
struct Range {
    std::int64_t least;
    std::int64_t most;
};

constexpr Range from_zero = {0, std::numeric_limits<std::int32_t>::max()};
constexpr Range from_one = {1, std::numeric_limits<std::int32_t>::max()};
constexpr Range milliseconds = {0, std::int64_t{1} << 41};  // longer than any scan time
constexpr Range any_time = {std::numeric_limits<std::int64_t>::min() / 2,
                            std::numeric_limits<std::int64_t>::max() / 2};
// Room enough that two of them can be added, and a size in KiB be told in bytes.
constexpr Range amount = {0, std::int64_t{1} << 60};
constexpr Range kib_amount = {0, std::int64_t{1} << 50};

// A part as a visitor meets it.
template <class Visitor, class Part>
using Seen = std::conditional_t<Visitor::is_writer, const Part, Part>;

template <class Visitor>
void visit(Visitor& member, Seen<Visitor, ScanSpans>& spans) {
    member("scan_time", spans.time, from_zero);
    member("scan_period", spans.period, from_zero);
}

template <class Visitor>
void visit(Visitor& member, Seen<Visitor, FileSystemSize>& size) {
    member("mount_point", size.mount_point);
    member("size_kib", size.size_kib, kib_amount);
    member("inodes", size.inodes, amount);
}

// "hardware":{"cpus":4,"memory_kib":24539844,"swap_kib":0,
//  "file_systems":[{"mount_point":"/","size_kib":263112772,"inodes":16777216}],"boot_id":"9c4b..."}
template <class Visitor>
void visit(Visitor& member, Seen<Visitor, Hardware>& hardware) {
    member("cpus", hardware.cpus, amount);
    member("memory_kib", hardware.memory_kib, kib_amount);
    member("swap_kib", hardware.swap_kib, kib_amount);
    member("file_systems", hardware.file_systems);
    member("boot_id", hardware.boot_id);
}

// {"recording_format":1,"version":"1.0","host":"web1","machine":"x86_64","kernel":"6.1.0",
//  "page_size":4096,"start":"2026-03-12T14:05:00Z","scan_time":604800,"scan_period":300}
template <class Visitor>
void visit(Visitor& member, Seen<Visitor, RecordingHeader>& header) {
    member("version", header.version);
    member("host", header.host);
    member("machine", header.machine);
    member("kernel", header.kernel);
    member("page_size", header.page_size, from_one);
    member.time("start", header.start);
    visit(member, header.spans);
    member("root", header.root);
    member("boot_ms", header.boot_ms, amount);
    member("hardware", header.hardware);
}

// {"continued":true,"at_ms":86400000,"version":"1.0","kernel":"6.1.0","scan_time":604800,
//  "scan_period":300}
template <class Visitor>
void visit(Visitor& member, Seen<Visitor, Continuation>& continuation) {
    member("at_ms", continuation.at_ms, milliseconds);
    member("version", continuation.version);
    member("kernel", continuation.kernel);
    visit(member, continuation.spans);
    member("root", continuation.root);
    member("boot_ms", continuation.boot_ms, amount);
    member("hardware", continuation.hardware);
    member("clock_ms", continuation.clock_ms, any_time);
}

template <class Visitor>
void visit(Visitor& member, Seen<Visitor, ProcessFigure>& figure) {
    member("value", figure.value, kib_amount);
    member("name", figure.name);
}

template <class Visitor>
void visit(Visitor& member, Seen<Visitor, Usage>& usage) {
    member("uptime_ms", usage.uptime_ms, amount);
    member("tasks", usage.tasks, amount);
    member("memory_kib", usage.memory_kib, kib_amount);
    member("swap_kib", usage.swap_kib, kib_amount);
    member("shm_kib", usage.shm_kib, kib_amount);
    member("cpu_ms", usage.cpu_ms, amount);
    member("runnable", usage.runnable, amount);
    member("cpu_pressure_us", usage.cpu_pressure_us, amount);
    member("memory_pressure_us", usage.memory_pressure_us, amount);
    member("io_pressure_us", usage.io_pressure_us, amount);
    member("disk_read_bytes", usage.disk_read_bytes, amount);
    member("disk_written_bytes", usage.disk_written_bytes, amount);
    member("disk_operations", usage.disk_operations, amount);
    member("net_received_bytes", usage.net_received_bytes, amount);
    member("net_sent_bytes", usage.net_sent_bytes, amount);
    member("descriptors", usage.descriptors);
    member("locked_kib", usage.locked_kib);
}

// {"pass":1,"at_ms":0,"took_ms":131,"counts":{"numproc":120,"numtcpsock":40,...}}
template <class Visitor>
void visit(Visitor& member, Seen<Visitor, RecordedPass>& pass) {
    member("pass", pass.number, from_one);
    member("at_ms", pass.at_ms, milliseconds);
    member("took_ms", pass.took_ms, milliseconds);
    member.counts("counts", pass.counts, pass.taken);
    member("failed", pass.failure);
    member("usage", pass.usage);
    member("clock_ms", pass.clock_ms, any_time);
}

template <class Visitor>
void visit(Visitor& member, Seen<Visitor, CheckFinding>& finding) {
    member("text", finding.text);
    member("remedy", finding.remedy);
    member("lines", finding.lines);
}

// {"at_ms":0,"check":[{"text":"ps is missing: ...","remedy":"install ps ...","lines":["NUMPROC"]}]}
template <class Visitor>
void visit(Visitor& member, Seen<Visitor, CheckResult>& check) {
    member("at_ms", check.at_ms, milliseconds);
    member("check", check.findings);
}

template <class Visitor>
void visit(Visitor& member, Seen<Visitor, NetIface>& iface) {
    member("name", iface.ifname);
    member("kind", iface.if_type);
    member("addresses", iface.ip_addresses);
    member("dhcp", iface.dhcp);
}

template <class Visitor>
void visit(Visitor& member, Seen<Visitor, TarnACalculateHWNodeWarning>& warning) {
    member("code", warning.code);
    member("message", warning.message);
}

template <class Visitor>
void visit(Visitor& member, Seen<Visitor, TarnAExcludePath>& exclude) {
    member("flag", exclude.flag);
    member("path", exclude.path);
}

template <class Visitor>
void visit(Visitor& member, Seen<Visitor, StepFailure>& failure) {
    member("step", failure.step);
    member("text", failure.text);
}

template <class Visitor>
void visit(Visitor& member, Seen<Visitor, Findings>& findings) {
    member("quotaugidlimit", findings.quotaugidlimit);
    member("interfaces", static_cast<Seen<Visitor, std::vector<NetIface>>&>(findings.ifaces));
    member("distribution", findings.distribution);
    member("hostname", findings.hostname);
    member("nameservers", findings.ns_attrs.nameservers);
    member("search_domains", findings.ns_attrs.search_domains);
    member("warnings", findings.notes.warnings);
    member("excludes", findings.notes.excludes);
    member("nfs", findings.nfs_found);
    member("reiserfs", findings.reiserfs_found);
    member("failures", findings.failures);
    member("messages", findings.messages);
}

template <class Visitor>
void visit(Visitor& member, Seen<Visitor, Summary>& summary) {
    member("at_ms", summary.at_ms, milliseconds);
    member("interrupted", summary.interrupted);
    member("findings", summary.findings);
    member("clock_ms", summary.clock_ms, any_time);
}
