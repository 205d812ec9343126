#include "plan/limits/engines.h"

#include <iterator>

namespace {

// In the order of Engine.
constexpr struct {
    const char* name;
    LimitsText (*write)(const LimitSheet&);
} engines[] = {
    {"systemd", write_systemd}, {"nspawn", write_nspawn},         {"lxc", write_lxc},
    {"podman", write_podman},   {"kubernetes", write_kubernetes}, {"rsync", write_rsync},
};
static_assert(std::size(engines) == engine_count, "a row for each");

// Why there is none.
constexpr const char* unlimited = "nothing today limits that";
constexpr const char* per_process = "limited for each process, not for all together";
constexpr const char* in_memory = "part of the limit of memory";
constexpr const char* virtual_size = "memory really used is limited, not virtual sizes";
constexpr const char* file_system = "give the container a file system of that size";
constexpr const char* quotas = "up to the container's own file system";
constexpr const char* in_copy = "in the files of the copy itself";
constexpr const char* of_host = "a service shares it with its host";
constexpr const char* with_network = "given with the container's network";
constexpr const char* of_node = "set for the whole node";
constexpr const char* only_files = "rsync copies files and limits nothing";

// Where an engine has something for the line: no reason.
constexpr const char* has = nullptr;

// A line of the configuration, and why the engines have nothing for it, in their order.
struct LineRow {
    const char* line;
    const char* lacks[engine_count - 1];  // rsync has none of them
};

constexpr LineRow lacking_row(const char* line, const char* reason) {
    return {line, {reason, reason, reason, reason, reason}};
}

// In the order of the configuration.
constexpr LineRow rows[] = {
    {"NUMPROC", {has, has, has, has, of_node}},
    lacking_row("AVNUMPROC", unlimited),
    lacking_row("NUMTCPSOCK", unlimited),
    lacking_row("NUMOTHERSOCK", unlimited),
    lacking_row("NUMPTY", unlimited),
    {"NUMFILE", {per_process, per_process, per_process, per_process, of_node}},
    lacking_row("DCACHESIZE", in_memory),
    lacking_row("KMEMSIZE", in_memory),
    lacking_row("TCPSNDBUF", in_memory),
    lacking_row("TCPRCVBUF", in_memory),
    lacking_row("OTHERSOCKBUF", in_memory),
    lacking_row("DGRAMRCVBUF", in_memory),
    lacking_row("PRIVVMPAGES", virtual_size),
    lacking_row("VMGUARPAGES", virtual_size),
    lacking_row("OOMGUARPAGES", virtual_size),
    {"LOCKEDPAGES", {per_process, per_process, per_process, per_process, of_node}},
    lacking_row("SHMPAGES", in_memory),
    {"PHYSPAGES", {has, has, has, has, has}},
    lacking_row("NUMFLOCK", unlimited),
    lacking_row("NUMSIGINFO", unlimited),
    lacking_row("NUMIPTENT", unlimited),
    {"DISKSPACE", {file_system, file_system, file_system, file_system, has}},
    lacking_row("DISKINODES", file_system),
    {"CPUUNITS", {has, has, has, has, has}},
    lacking_row("QUOTATIME", quotas),
    lacking_row("QUOTAUGIDLIMIT", quotas),
    {"SLMMEMORYLIMIT", {has, has, has, has, has}},
    lacking_row("SLMMODE", unlimited),
    lacking_row("DISTRIBUTION", in_copy),
    {"HOSTNAME", {of_host, has, has, has, has}},
    {"#IP_ADDRESS", {of_host, with_network, with_network, with_network, with_network}},
    {"SEARCHDOMAIN", {of_host, has, in_copy, has, has}},
    {"NAMESERVER", {of_host, has, in_copy, has, has}},
    {"FEATURES", {has, has, has, has, has}},
};

}  // namespace

const char* name_of(Engine engine) {
    return engines[static_cast<std::size_t>(engine)].name;
}

std::optional<Engine> engine_called(const std::string& name) {
    for (std::size_t i = 0; i < engine_count; ++i) {
        if (engines[i].name == name) {
            return static_cast<Engine>(i);
        }
    }
    return {};
}

LimitsText limits_text(Engine engine, const LimitSheet& sheet) {
    return engines[static_cast<std::size_t>(engine)].write(sheet);
}

std::vector<LinesOfReason> lacking_lines(Engine engine) {
    std::vector<LinesOfReason> groups;
    for (const LineRow& row : rows) {
        const char* const reason =
            engine == Engine::rsync ? only_files : row.lacks[static_cast<std::size_t>(engine)];
        if (reason != has) {
            add_by_reason(row.line, reason, groups);
        }
    }
    return groups;
}
