// The rules that turn mount entries into paths that must not be copied: which mounts are excluded,
// and which of them are left out because another one covers them. Pure: reads no file. Used by the
// exclusion step.
#pragma once

#include <functional>
#include <map>
#include <string>

#include "inspect/mount_table.h"

// How one mount point is excluded.
struct MntFlags {
    bool flag = false;          // false only for mounts of kernel ("nodev") file systems
    bool contents_only = true;  // keep the directory itself, exclude what lies below it

    MntFlags() = default;
    MntFlags(bool flag_value, bool contents_only_value)
        : flag(flag_value), contents_only(contents_only_value) {}
};

// Mount point to its flags, in plain byte order: a path comes after all of its ancestors.
using ExcludeTable = std::map<std::string, MntFlags, std::less<>>;

// What the mount tables of a host say.
struct MountFindings {
    ExcludeTable candidates;
    bool nfs_found = false;       // a mount of type "nfs"
    bool reiserfs_found = false;  // a mount of type "reiserfs"
};

// Classifies one entry and notes it in `findings`; a candidate replaces an earlier one of the same
// mount point, an entry that is no candidate leaves an earlier one standing.
void note_mount(const MountEntry& entry, const FsTypeTable& types, MountFindings& findings);

// Adds one path to a reduced table, without its trailing slashes, unless it is the root, a single
// word or covered by an entry of the table. Replaces an entry of the same path.
void add_exclude_dir(ExcludeTable& table, std::string path, const MntFlags& flags);

// The candidates that no other candidate covers.
ExcludeTable refactor_excludes(const ExcludeTable& candidates);
