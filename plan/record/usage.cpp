#include "plan/record/usage.h"

#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "inspect/mount_table.h"
#include "kiln/files.h"
#include "plan/record/local_mounts.h"
#include "plan/record/usage_parsers.h"

namespace {

constexpr std::int64_t bytes_per_kib = 1024;

bool exists(const std::string& path) {
    return access(path.c_str(), F_OK) == 0;
}

std::optional<std::string> text_of(const std::string& path) {
    std::string text;
    return Kiln::get_file(path, text) == 0 ? std::optional(std::move(text)) : std::nullopt;
}

// No parser of lines with a key finds anything in what cannot be read.
std::string lines_of(const std::string& path) {
    return text_of(path).value_or("");
}

// Several paths to one disk are shown as so many disks and once more as their head. Every kernel
// counts on the paths, the head is left out.
bool is_head_of_paths(const std::string& disk) {
    std::array<char, 1024> target = {};
    const ssize_t length = readlink(disk.c_str(), target.data(), target.size());
    const std::string_view text(target.data(), length < 0 ? 0 : static_cast<std::size_t>(length));
    return text.find("/nvme-subsystem/") != std::string_view::npos;
}

// Partitions have no entry of their own here; disks made of disks, of files or of memory stand on
// no device. A slash in a name is written as another character.
bool is_physical_disk(const std::string& disks, std::string_view name) {
    std::string entry(name);
    std::replace(entry.begin(), entry.end(), '/', '!');
    const std::string disk = disks + "/" + entry;
    return exists(disk + "/device") && !is_head_of_paths(disk);
}

// A bridge, a bond or the end of a pair stands on no device. Where two interfaces of a virtual
// machine are one (a fast one below a slow one), the upper counts the bytes of both.
bool is_physical_interface(const std::string& interfaces, std::string_view name) {
    const std::string entry = interfaces + "/" + std::string(name);
    return exists(entry + "/device") && !exists(entry + "/master/device");
}

void add_processors(Usage& usage, const UsageSources& sources) {
    const std::string& proc = sources.paths.proc;
    const std::string processors = lines_of(proc + "/stat");
    usage.uptime_ms = parse_uptime_ms(lines_of(proc + "/uptime"));
    usage.cpu_ms = parse_cpu_ms(processors, sources.ticks_per_second);
    usage.runnable = parse_runnable(processors);
    usage.cpu_pressure_us = parse_pressure_us(lines_of(proc + "/pressure/cpu"));
    usage.memory_pressure_us = parse_pressure_us(lines_of(proc + "/pressure/memory"));
    usage.io_pressure_us = parse_pressure_us(lines_of(proc + "/pressure/io"));
}

// Without the kernel's tree of devices nobody knows what is physical.
void add_disks(Usage& usage, const UsagePaths& paths) {
    const std::string disks = paths.sys + "/block";
    const std::optional<std::string> table = text_of(paths.proc + "/diskstats");
    if (!table || !exists(disks)) {
        return;
    }
    const DiskTotals totals = parse_disk_totals(
        *table, [&](std::string_view name) { return is_physical_disk(disks, name); });
    usage.disk_read_bytes = totals.read_bytes;
    usage.disk_written_bytes = totals.written_bytes;
    usage.disk_operations = totals.operations;
}

void add_interfaces(Usage& usage, const UsagePaths& paths) {
    const std::string interfaces = paths.sys + "/class/net";
    const std::optional<std::string> table = text_of(paths.proc + "/net/dev");
    if (!table || !exists(interfaces)) {
        return;
    }
    const NetTotals totals = parse_net_totals(
        *table, [&](std::string_view name) { return is_physical_interface(interfaces, name); });
    usage.net_received_bytes = totals.received_bytes;
    usage.net_sent_bytes = totals.sent_bytes;
}

// Whether something is mounted there: what lies above is on another device then.
bool is_mounted(const std::string& folder) {
    struct stat here = {};
    struct stat above = {};
    return stat(folder.c_str(), &here) == 0 && stat((folder + "/..").c_str(), &above) == 0 &&
           here.st_dev != above.st_dev;
}

// Whole blocks in KiB.
Figure kib_of(std::uint64_t blocks, std::int64_t block_bytes) {
    const Figure bytes = blocks <= INT64_MAX ? Figure(blocks) : Figure();
    const Figure product = times(bytes, block_bytes);
    return product ? Figure(*product / bytes_per_kib) : Figure();
}

// The folder of the devices lives in memory as well, and is not what is meant. A file system
// without a limit does not tell how much of it is in use.
Figure shared_memory_kib(const std::string& folder) {
    struct statfs status = {};
    const bool is_known = is_mounted(folder) && statfs(folder.c_str(), &status) == 0 &&
                          status.f_type == TMPFS_MAGIC && status.f_blocks > 0;
    return is_known ? kib_of(status.f_blocks - status.f_bfree, status.f_bsize) : Figure();
}

std::vector<FileSystemSize> local_file_systems(const UsageSources& sources) {
    std::vector<FileSystemSize> found;
    const std::string mounts = lines_of(sources.paths.proc + "/self/mounts");
    for (const std::string& mount_point : local_mount_points(parse_mount_table(mounts))) {
        if (std::optional<FileSystemSize> size = sources.file_system_size(mount_point)) {
            found.push_back(std::move(*size));
        }
    }
    return found;
}

}  // namespace

std::optional<FileSystemSize> kernel_file_system_size(const std::string& mount_point) {
    struct statvfs status = {};
    if (statvfs(mount_point.c_str(), &status) != 0 || status.f_blocks == 0) {
        return {};
    }
    const Figure size_kib = kib_of(status.f_blocks, static_cast<std::int64_t>(status.f_frsize));
    if (!size_kib || status.f_files > INT64_MAX) {
        return {};
    }
    return FileSystemSize{mount_point, *size_kib, static_cast<std::int64_t>(status.f_files)};
}

std::int64_t kernel_ticks_per_second() {
    return sysconf(_SC_CLK_TCK);
}

Usage read_usage(const UsageSources& sources, const ProcessUsage& processes) {
    Usage usage;
    add_processors(usage, sources);
    add_disks(usage, sources.paths);
    add_interfaces(usage, sources.paths);
    const MemoryInfo memory = parse_memory_info(lines_of(sources.paths.proc + "/meminfo"));
    usage.memory_kib = memory.used_kib;
    usage.swap_kib = memory.swap_used_kib;
    usage.shm_kib = shared_memory_kib(sources.paths.shm);
    usage.tasks = processes.tasks();
    usage.descriptors = processes.descriptors();
    usage.locked_kib = processes.locked_kib();
    return usage;
}

std::string read_boot_id(const UsagePaths& paths) {
    return parse_boot_id(lines_of(paths.proc + "/sys/kernel/random/boot_id"));
}

Hardware read_hardware(const UsageSources& sources) {
    const UsagePaths& paths = sources.paths;
    const MemoryInfo memory = parse_memory_info(lines_of(paths.proc + "/meminfo"));
    Hardware hardware;
    hardware.cpus = count_cpu_list(lines_of(paths.sys + "/devices/system/cpu/online"));
    hardware.memory_kib = memory.total_kib;
    hardware.swap_kib = memory.swap_total_kib;
    hardware.file_systems = local_file_systems(sources);
    hardware.boot_id = read_boot_id(paths);
    return hardware;
}
