// Parsers for what the kernel says of the use of a host. Pure functions of the text. What is
// missing, torn, negative or too large for its number gives nothing, and costs nothing else.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "plan/record/figures.h"

struct MemoryInfo {
    Figure total_kib;
    Figure used_kib;  // what is not available: page cache that can be dropped is left out
    Figure swap_total_kib;
    Figure swap_used_kib;
};

// Of /proc/meminfo.
MemoryInfo parse_memory_info(std::string_view text);

// Of /proc/stat: the time that all processors worked since boot, those that a guest of ours had
// included. What was idle, waited for or stolen is not in it. `ticks_per_second` is above 0.
Figure parse_cpu_ms(std::string_view text, std::int64_t ticks_per_second);

// Of /proc/stat: the processes that run or want to, the reader included.
Figure parse_runnable(std::string_view text);

// Of /proc/pressure/cpu, memory or io: how long some task waited.
Figure parse_pressure_us(std::string_view text);

// Whether a name of the kernel's table is that of hardware whose numbers are to be counted.
using IsPhysical = std::function<bool(std::string_view name)>;

struct DiskTotals {
    Figure read_bytes;
    Figure written_bytes;
    Figure operations;
};

// Of /proc/diskstats, the sums over the physical disks; 0 where there is none.
DiskTotals parse_disk_totals(std::string_view text, const IsPhysical& is_physical);

struct NetTotals {
    Figure received_bytes;
    Figure sent_bytes;
};

// Of /proc/net/dev, the sums over the physical interfaces; 0 where there is none.
NetTotals parse_net_totals(std::string_view text, const IsPhysical& is_physical);

// Of /proc/uptime.
Figure parse_uptime_ms(std::string_view text);

// Of /proc/sys/kernel/random/boot_id; empty when the text is no such id.
std::string parse_boot_id(std::string_view text);

// How many processors a list such as that of /sys/devices/system/cpu/online names.
Figure count_cpu_list(std::string_view text);

// What a process's status file says beside the figures of the memory scan.
struct ProcessStatus {
    bool has_memory = false;  // of its own: a kernel's thread has none, nor has a zombie
    Figure threads;
    Figure locked_kib;
    std::string_view name;  // into the text; a newline or backslash of it is escaped by the kernel
};

ProcessStatus parse_process_usage(std::string_view status_text);
