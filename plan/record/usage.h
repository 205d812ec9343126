// Reads what a host really uses at the moment of a pass, and how large the host is. Used by the
// recorder.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "plan/record/process_usage.h"
#include "plan/recording/usage.h"

// Where the kernel shows what it knows.
struct UsagePaths {
    std::string proc = "/proc";
    std::string sys = "/sys";
    std::string shm = "/dev/shm";
};

// The size of the file system at a mount point; nothing when it cannot be asked or has none.
std::optional<FileSystemSize> kernel_file_system_size(const std::string& mount_point);

// The ticks of a second that the kernel counts processor time in.
std::int64_t kernel_ticks_per_second();

// The real host, unless somebody hands in another.
struct UsageSources {
    UsagePaths paths;
    std::function<std::optional<FileSystemSize>(const std::string&)> file_system_size =
        kernel_file_system_size;
    std::int64_t ticks_per_second = kernel_ticks_per_second();
};

// The use of this moment. Each source is read once; one that is missing, fails or says what cannot
// be understood leaves its members empty and touches no other. `processes` is what the memory scan
// of the same pass showed; a new one, which was shown nothing, leaves its three members empty. Asks
// no file system but that of shared memory, and only where it lives in memory.
Usage read_usage(const UsageSources& sources, const ProcessUsage& processes);

// What the kernel calls the time since the machine was started; empty where it does not say.
std::string read_boot_id(const UsagePaths& paths);

// How large the host is. A source that fails costs its member as above. Asks the local file systems
// for their sizes: a broken disk can make that last.
Hardware read_hardware(const UsageSources& sources);
