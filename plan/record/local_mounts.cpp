#include "plan/record/local_mounts.h"

#include <algorithm>
#include <set>
#include <unordered_map>

namespace {

// Of these the data lies on a disk of this machine. The source decides nothing: a root on a network
// may be called /dev/root as well.
const std::set<std::string> disk_types = {
    "bcachefs", "btrfs", "exfat", "ext2",  "ext3",   "ext4", "f2fs",  "hfsplus",
    "jffs2",    "jfs",   "minix", "msdos", "nilfs2", "ntfs", "ntfs3", "reiser4",
    "reiserfs", "ubifs", "vfat",  "vxfs",  "xfs",    "zfs",
};

// Of these there may be one on the way to a disk: they live in the kernel's memory or in an image.
const std::set<std::string> harmless_types = {
    "aufs",  "autofs", "devtmpfs", "erofs", "iso9660", "overlay",
    "ramfs", "rootfs", "squashfs", "tmpfs", "udf",
};

// Everything else may ask a machine that is gone, or a program that hangs.
bool may_hang(const MountEntry& mount) {
    return disk_types.count(mount.type) == 0 && harmless_types.count(mount.type) == 0;
}

// Nothing lies below the root here: who runs from a root that hangs hangs as well.
bool lies_at_or_below(const std::string& path, const std::string& folder) {
    const bool begins = path.compare(0, folder.size(), folder) == 0;
    return begins && (path.size() == folder.size() || path[folder.size()] == '/');
}

bool lies_behind_what_may_hang(const std::string& path, const std::vector<MountEntry>& mounts) {
    return std::any_of(mounts.begin(), mounts.end(), [&](const MountEntry& mount) {
        return lies_at_or_below(path, mount.mount_point) && may_hang(mount);
    });
}

// What is shared by all mounts of one file system: the source. Those of a pool share its room.
std::string store_of(const MountEntry& mount) {
    return mount.type == "zfs" ? mount.device.substr(0, mount.device.find('/')) : mount.device;
}

}  // namespace

std::vector<std::string> local_mount_points(const std::vector<MountEntry>& mounts) {
    std::unordered_map<std::string, const MountEntry*> on_top;  // of others at the same place
    for (const MountEntry& mount : mounts) {
        on_top[mount.mount_point] = &mount;
    }
    std::set<std::string> stores;
    std::vector<std::string> points;
    for (const MountEntry& mount : mounts) {
        const bool is_seen = on_top[mount.mount_point] == &mount;
        if (is_seen && disk_types.count(mount.type) != 0 && stores.count(store_of(mount)) == 0 &&
            !lies_behind_what_may_hang(mount.mount_point, mounts)) {
            stores.insert(store_of(mount));
            points.push_back(mount.mount_point);
        }
    }
    return points;
}
