#include "plan/limits/equivalents.h"

#include <algorithm>

namespace {

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

struct Cell {
    bool exists;
    const char* text;  // the engine's word for it, or why there is none
};

constexpr Cell has(const char* word) {
    return {true, word};
}

constexpr Cell lacks(const char* reason) {
    return {false, reason};
}

// A line of the configuration; cells in the order of Engine.
struct LineRow {
    const char* line;
    Cell cells[engine_count - 1];  // rsync has none of them
};

constexpr LineRow lacking_row(const char* line, const char* reason) {
    return {line, {lacks(reason), lacks(reason), lacks(reason), lacks(reason), lacks(reason)}};
}

constexpr LineRow per_process_row(const char* line) {
    return {line,
            {lacks(per_process), lacks(per_process), lacks(per_process), lacks(per_process),
             lacks(of_node)}};
}

constexpr LineRow memory_row(const char* line) {
    return {line,
            {has("MemoryMax"), has("MemoryMax"), has("lxc.cgroup2.memory.max"), has("--memory"),
             has("limits.memory")}};
}

constexpr LineRow resolver_row(const char* line, const char* podman, const char* kubernetes) {
    return {line,
            {lacks(of_host), has("ResolvConf"), lacks(in_copy), has(podman), has(kubernetes)}};
}

// In the order of the configuration.
constexpr LineRow rows[] = {
    {"NUMPROC",
     {has("TasksMax"), has("TasksMax"), has("lxc.cgroup2.pids.max"), has("--pids-limit"),
      lacks(of_node)}},
    lacking_row("AVNUMPROC", unlimited),
    lacking_row("NUMTCPSOCK", unlimited),
    lacking_row("NUMOTHERSOCK", unlimited),
    lacking_row("NUMPTY", unlimited),
    per_process_row("NUMFILE"),
    lacking_row("DCACHESIZE", in_memory),
    lacking_row("KMEMSIZE", in_memory),
    lacking_row("TCPSNDBUF", in_memory),
    lacking_row("TCPRCVBUF", in_memory),
    lacking_row("OTHERSOCKBUF", in_memory),
    lacking_row("DGRAMRCVBUF", in_memory),
    lacking_row("PRIVVMPAGES", virtual_size),
    lacking_row("VMGUARPAGES", virtual_size),
    lacking_row("OOMGUARPAGES", virtual_size),
    per_process_row("LOCKEDPAGES"),
    lacking_row("SHMPAGES", in_memory),
    memory_row("PHYSPAGES"),
    lacking_row("NUMFLOCK", unlimited),
    lacking_row("NUMSIGINFO", unlimited),
    lacking_row("NUMIPTENT", unlimited),
    {"DISKSPACE",
     {lacks(file_system), lacks(file_system), lacks(file_system), lacks(file_system),
      has("limits.ephemeral-storage")}},
    lacking_row("DISKINODES", file_system),
    {"CPUUNITS",
     {has("CPUWeight"), has("CPUWeight"), has("lxc.cgroup2.cpu.weight"), has("--cpu-shares"),
      has("requests.cpu")}},
    lacking_row("QUOTATIME", quotas),
    lacking_row("QUOTAUGIDLIMIT", quotas),
    memory_row("SLMMEMORYLIMIT"),
    lacking_row("SLMMODE", unlimited),
    lacking_row("DISTRIBUTION", in_copy),
    {"HOSTNAME",
     {lacks(of_host), has("Hostname"), has("lxc.uts.name"), has("--hostname"), has("hostname")}},
    {"#IP_ADDRESS",
     {lacks(of_host), lacks(with_network), lacks(with_network), lacks(with_network),
      lacks(with_network)}},
    resolver_row("SEARCHDOMAIN", "--dns-search", "dnsConfig.searches"),
    resolver_row("NAMESERVER", "--dns", "dnsConfig.nameservers"),
    {"FEATURES",
     {has("BindPaths"), has("Bind"), has("lxc.mount.entry"), has("--volume"), has("volumes")}},
};

Cell cell_of(const LineRow& row, Engine engine) {
    return engine == Engine::rsync ? lacks(only_files)
                                   : row.cells[static_cast<std::size_t>(engine)];
}

}  // namespace

std::vector<LackingLines> lacking_lines(Engine engine) {
    std::vector<LackingLines> groups;
    for (const LineRow& row : rows) {
        const Cell cell = cell_of(row, engine);
        if (cell.exists) {
            continue;
        }
        const auto same =
            std::find_if(groups.begin(), groups.end(),
                         [&](const LackingLines& group) { return group.reason == cell.text; });
        if (same == groups.end()) {
            groups.push_back({{row.line}, cell.text});
        } else {
            same->lines.emplace_back(row.line);
        }
    }
    return groups;
}
