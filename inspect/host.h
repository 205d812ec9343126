// The host as the inspections and the sampling see it: where its files are, how its commands are
// run, and what its kernel says of it. The default is the real host; a test hands in another one.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "kiln/runscript.h"

// Every path that is opened by itself. (The commands have theirs in their texts.)
struct HostPaths {
    std::string proc = "/proc";
    std::string filesystems = "/proc/filesystems";
    std::string fstab = "/etc/fstab";
    std::string mtab = "/etc/mtab";
    std::string resolv_conf = "/etc/resolv.conf";
    std::string login_record = "/var/log/lastlog";
    // The doubled slash is meant: a warning shows the path as it stands.
    std::string detect_script = "/tmp//usr/local/share/tarnp2v/distdetect-common.sh";
    // Only the companion asks these: who an id is, and where programs usually are.
    std::string users = "/etc/passwd";
    std::string groups = "/etc/group";
    std::vector<std::string> program_folders = {"/usr/sbin", "/usr/bin", "/sbin", "/bin"};
};

// Runs a shell command and keeps the contract of runscript().
using RunCommand =
    std::function<int(const std::string& command, std::string& out, std::string& err)>;

// The kernel's host name, or nothing when it cannot be read.
std::optional<std::string> kernel_host_name();

// The machine's pages of physical memory, -1 when they are not known.
std::int64_t kernel_physical_pages();

struct Host {
    HostPaths paths;
    RunCommand run = runscript;
    std::function<std::optional<std::string>()> host_name = kernel_host_name;
    std::function<std::int64_t()> physical_pages = kernel_physical_pages;
};
