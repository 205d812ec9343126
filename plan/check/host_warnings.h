// What makes a run's numbers wrong, or the run unsafe, though no step fails. Each function looks at
// one thing and says what it found, with what to do about it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "calc/sample.h"
#include "inspect/host.h"
#include "inspect/mount_table.h"
#include "kiln/result.h"
#include "plan/recording/finding.h"

CheckFindings user_warnings(bool is_root);

// Whether we may open too few files at once to ask anything: then nobody else is to blame.
CheckFindings shortage_warnings();

// The programs of a shell command.
std::vector<std::string> programs_of(const std::string& command);

// A program that the words of PATH do not have, and the counts that live on it.
struct MissingProgram {
    std::string name;
    TakenCounts counts;
};

// Those that a pass asks, each once.
std::vector<MissingProgram> missing_programs(const std::string& path);

// What PATH lacks: first the usual folders of programs, then each program that is in none of them.
CheckFindings missing_warnings(const std::vector<MissingProgram>& missing, const std::string& path,
                               const std::vector<std::string>& usual_folders);

// The words of PATH, where the commands are looked for: those that others have in their hands.
CheckFindings search_path_warnings(const std::string& path, const HostPaths& tables);

// The detection script that somebody else may have put there, with the step's reason.
CheckFinding script_warning(const std::string& reason);

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

// Every mount of the host; none where no table can be read.
std::vector<MountEntry> mounts_of(const Host& host);

// Whether the mount answers. May hang.
Kiln::Done check_mount(const std::string& mount_point);

CheckFinding mount_warning(const MountEntry& mount, const std::string& trouble);
