// Which mounts are file systems of the host's own disks. Pure.
#pragma once

#include <string>
#include <vector>

#include "inspect/mount_table.h"

// The mount points of the local file systems that hold data, in the order of the table: one for
// each file system, however often it is mounted (or for each pool, where file systems share one).
// Whoever asks the kernel about one of them asks no other machine and no program: what lies on a
// network, below or behind such a mount is left out.
std::vector<std::string> local_mount_points(const std::vector<MountEntry>& mounts);
