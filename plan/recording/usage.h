// What a host really used at the moment of a pass, beside the calculator's counts; and how large it
// is. Plain values. A source that is missing or fails costs its member, nothing else.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// The largest figure that one process has, and what the process is called (any bytes).
struct ProcessFigure {
    std::int64_t value = 0;
    std::string name;
};

// Totals "since boot" only grow while the host is up; a reboot (another boot id) starts them anew.
struct Usage {
    // Of the moment of the reading: the time that rates are divided by.
    std::optional<std::int64_t> uptime_ms;
    std::optional<std::int64_t> tasks;  // threads of all processes that have memory of their own
    std::optional<std::int64_t> memory_kib;  // in use, page cache left out
    std::optional<std::int64_t> swap_kib;    // in use
    std::optional<std::int64_t> shm_kib;     // in use on /dev/shm
    // Since boot, of all processors: user, nice, system, irq, softirq.
    std::optional<std::int64_t> cpu_ms;
    std::optional<std::int64_t> runnable;         // processes that run or want to
    std::optional<std::int64_t> cpu_pressure_us;  // since boot: some task waited
    std::optional<std::int64_t> memory_pressure_us;
    std::optional<std::int64_t> io_pressure_us;
    std::optional<std::int64_t> disk_read_bytes;  // since boot, physical disks only
    std::optional<std::int64_t> disk_written_bytes;
    std::optional<std::int64_t> disk_operations;     // since boot, reads and writes
    std::optional<std::int64_t> net_received_bytes;  // since boot, physical interfaces only
    std::optional<std::int64_t> net_sent_bytes;
    std::optional<ProcessFigure> descriptors;  // the most open descriptors of one process
    std::optional<ProcessFigure> locked_kib;   // the most locked memory of one process
};

struct FileSystemSize {
    std::string mount_point;
    std::int64_t size_kib = 0;
    std::int64_t inodes = 0;  // 0 where it counts none
};

// Of the host that is recorded; a member of the header and of each continuation.
struct Hardware {
    std::optional<std::int64_t> cpus;  // online
    std::optional<std::int64_t> memory_kib;
    std::optional<std::int64_t> swap_kib;
    std::vector<FileSystemSize> file_systems;  // local ones
    std::string boot_id;                       // empty where unknown
};
