// What the kernel says of the use of a host, and which mounts are the host's own.
#include <set>

#include "fuzz/support.h"
#include "plan/record/local_mounts.h"
#include "plan/record/usage_parsers.h"

namespace {

void require_figures(std::initializer_list<Figure> figures) {
    for (const Figure& figure : figures) {
        require(!figure || *figure >= 0, "no figure is negative");
    }
}

void check_lines_with_keys(const std::string& text) {
    const MemoryInfo memory = parse_memory_info(text);
    require(!memory.swap_used_kib || memory.swap_used_kib <= memory.swap_total_kib,
            "no more is in use than there is");
    require_figures({memory.used_kib, parse_cpu_ms(text, 100), parse_runnable(text),
                     parse_pressure_us(text), parse_uptime_ms(text)});
    require(count_cpu_list(text).value_or(1) >= 1, "a list names one processor at least");
    const std::string id = parse_boot_id(text);
    require(id.empty() || id + "\n" == text.substr(0, id.size() + 1), "the first line");
}

void check_mounts(const std::string& text) {
    const std::vector<MountEntry> mounts = parse_mount_table(text);
    const std::vector<std::string> points = local_mount_points(mounts);
    const std::set<std::string> set(points.begin(), points.end());
    require(set.size() == points.size(), "none is listed twice");
    for (const MountEntry& mount : mounts) {
        const bool hangs = mount.type == "nfs" && mount.mount_point != "/";
        require(!hangs || set.count(mount.mount_point) == 0, "nothing on a network is asked");
    }
}

}  // namespace

// Input: a file of lines with keys, a table, a process's status, a mount table.
void try_input(fuzz::Input input) {
    const std::vector<std::string> parts = input.sections(4);
    check_lines_with_keys(parts[0]);
    const IsPhysical some = [](std::string_view name) { return name.size() % 2 == 0; };
    const DiskTotals disks = parse_disk_totals(parts[1], some);
    const NetTotals net = parse_net_totals(parts[1], some);
    const ProcessStatus status = parse_process_usage(parts[2]);
    require_figures({disks.read_bytes, disks.written_bytes, disks.operations, net.received_bytes,
                     net.sent_bytes, status.threads, status.locked_kib});
    require(status.name.find('\n') == std::string_view::npos, "a name ends with its line");
    check_mounts(parts[3]);
}
