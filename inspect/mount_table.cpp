#include "inspect/mount_table.h"

#include <mntent.h>

#include <cerrno>
#include <cstdio>
#include <memory>

#include "kiln/strings.h"

namespace {

struct MountTableCloser {
    void operator()(std::FILE* table) const { endmntent(table); }
};

}  // namespace

// A line reads: /dev/sda1 /srv/my\040data ext4 rw,relatime,usrquota 0 0
int read_mount_table(const char* path, std::vector<MountEntry>& entries) {
    // setmntent adds close-on-exec to the mode by itself.
    const std::unique_ptr<std::FILE, MountTableCloser> table(setmntent(path, "r"));
    if (!table) {
        return errno;
    }
    // The reader cuts a line at 4095 characters; what lies behind (the end of very long options)
    // does not count, as for every other program that uses it.
    while (const mntent* entry = getmntent(table.get())) {
        entries.push_back({entry->mnt_fsname, entry->mnt_dir, entry->mnt_type, entry->mnt_opts});
    }
    return 0;
}

// Lines read "nodev\tproc" or "\text4".
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
