// Reading the host's mount tables and the kernel's list of file system types.
// Used by the exclusion and the quota steps, which decide what an entry means.
#pragma once

#include <map>
#include <string>
#include <vector>

// One line of a mount table, its octal escapes decoded; a missing field is empty.
struct MountEntry {
    std::string device;
    std::string mount_point;
    std::string type;
    std::string options;  // as written, separated by commas
};

// File system type to whether the kernel marks it "nodev" (it needs no block device).
using FsTypeTable = std::map<std::string, bool>;

// Appends the entries of the mount table at `path`, in its order; comments and empty lines are left
// out. Returns 0, or the system error number when the table cannot be opened; a table that opens
// but cannot be read (a directory) holds no entries.
int read_mount_table(const char* path, std::vector<MountEntry>& entries);

// The types listed in the text of /proc/filesystems; a line without a second field names none.
FsTypeTable parse_filesystem_types(const std::string& text);
