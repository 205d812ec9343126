// What makes a run's numbers wrong, or the run unsafe, though no step fails. Each function looks at
// one thing and says what it found, with what to do about it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "inspect/host.h"
#include "plan/recording/finding.h"

CheckFindings user_warnings(bool is_root);

// The words of PATH, where the commands are looked for.
CheckFindings search_path_warnings(const std::string& path);

// The programs of a shell command that the words of PATH do not have. `lines` live on the command.
CheckFindings missing_programs(const std::string& command, const std::string& path,
                               const std::vector<std::string>& lines);

// The detection script and every folder above it. Nothing where it is not there.
CheckFindings script_warnings(const std::string& script);

// Sockets that only the IPv6 tables have.
CheckFindings socket_warnings(const Host& host);

// What the shell hands to `ls` when it lists all descriptors.
struct DescriptorArguments {
    std::uint64_t bytes = 0;  // with the pointers to them
    std::uint64_t count = 0;
    std::uint64_t directories = 0;   // `ls` lists what is in them instead
    std::uint64_t listed_lines = 0;  // that makes so many lines
};

// May hang where a descriptor is of a dead file system.
DescriptorArguments list_descriptors(const Host& host);

CheckFindings descriptor_warnings(const DescriptorArguments& arguments, std::uint64_t limit_bytes);

// The mounts that do not answer, each asked for so many seconds at most and until `wake_fd` (or -1)
// can be read.
CheckFindings mount_warnings(const Host& host, int limit_seconds, int wake_fd);
