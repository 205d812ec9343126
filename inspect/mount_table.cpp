#include "inspect/mount_table.h"

#include <mntent.h>

#include <cstdio>
#include <cstring>
#include <new>
#include <utility>

#include "inspect/host_file.h"
#include "kiln/owners.h"
#include "kiln/strings.h"

// A line reads: /dev/sda1 /srv/my\040data ext4 rw,relatime,usrquota 0 0
std::vector<MountEntry> parse_mount_table(std::string text) {
    if (text.empty()) {
        return {};  // some versions of the call below refuse it
    }
    const Kiln::File table(fmemopen(text.data(), text.size(), "r"));
    if (!table) {
        throw std::bad_alloc();
    }
    std::vector<MountEntry> entries;
    // The system's reader cuts a line at 4095 characters; what lies behind (the end of very long
    // options) does not count, as for every other program that uses it.
    while (const mntent* entry = getmntent(table.get())) {
        entries.push_back({entry->mnt_fsname, entry->mnt_dir, entry->mnt_type, entry->mnt_opts});
    }
    return entries;
}

// The text is read as a whole first: the system's reader takes a read error for the end.
Kiln::Result<std::vector<MountEntry>> read_mount_table(const std::string& path) {
    std::string text;
    if (const int error = read_host_file(path, text)) {
        return Kiln::Reason{std::strerror(error)};
    }
    return parse_mount_table(std::move(text));
}

// Lines read, with a tab in front of the name:
// nodev	proc
// 	ext4
FsTypeTable parse_filesystem_types(const std::string& text) {
    FsTypeTable types;
    for (const std::string& line : Kiln::split("\n", text, 0)) {
        const std::vector<std::string> fields = Kiln::split("\t", line, 0);
        if (fields.size() >= 2) {
            types[fields[1]] = fields[0] == "nodev";
        }
    }
    return types;
}
