// Reading the host's mount tables and the kernel's list of file system types.
// Used by the exclusion and the quota steps, which decide what an entry means.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "kiln/result.h"

// One line of a mount table, its octal escapes decoded; a missing field is empty.
struct MountEntry {
    std::string device;
    std::string mount_point;
    std::string type;
    std::string options;  // as written, separated by commas
};

// File system type to whether the kernel marks it "nodev" (it needs no block device).
using FsTypeTable = std::map<std::string, bool>;

// The entries of a mount table's text, in its order; comments and empty lines are left out, and
// so are automounter lines with the option "ignore".
std::vector<MountEntry> parse_mount_table(std::string text);

// The entries of the table at `path`. The reason why it cannot be opened or read to its end is the
// system's text alone.
Kiln::Result<std::vector<MountEntry>> read_mount_table(const std::string& path);

// The types listed in the text of /proc/filesystems; a line without a second field names none.
FsTypeTable parse_filesystem_types(const std::string& text);
