// The host as the inspections and the sampling see it: where its files are and how its commands are
// run. The default is the real host; a test hands in another one.
#pragma once

#include <functional>
#include <string>

#include "kiln/runscript.h"

// Every path that the calculator opens itself. (The commands have theirs in their texts.)
struct HostPaths {
    std::string proc = "/proc";
    std::string filesystems = "/proc/filesystems";
    std::string fstab = "/etc/fstab";
    std::string mtab = "/etc/mtab";
    std::string resolv_conf = "/etc/resolv.conf";
    std::string login_record = "/var/log/lastlog";
    // The doubled slash is meant: a warning shows the path as it stands.
    std::string detect_script = "/tmp//usr/local/share/tarnp2v/distdetect-common.sh";
};

// Runs a shell command and keeps the contract of runscript().
using RunCommand =
    std::function<int(const std::string& command, std::string& out, std::string& err)>;

struct Host {
    HostPaths paths;
    RunCommand run = runscript;
};
