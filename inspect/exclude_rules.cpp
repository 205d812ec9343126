#include "inspect/exclude_rules.h"

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <optional>
#include <string_view>

#include "kiln/strings.h"

namespace {

bool is_one_of(std::string_view word, std::initializer_list<std::string_view> words) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

// Plain substring tests, as required: "noloop" counts as a loop mount.
bool is_detached(const MountEntry& entry) {
    return Kiln::contains(entry.device, "/fd") || Kiln::contains(entry.device, "/loop") ||
           Kiln::contains(entry.options, "loop") || Kiln::contains(entry.options, "bind") ||
           Kiln::contains(entry.options, "removable_t");
}

// The first rule that applies decides; nothing for a local disk. A network mount with the option
// "bind" is a network mount, a fuse mount that the kernel marks "nodev" is still a fuse mount.
std::optional<MntFlags> classify(const MountEntry& entry, const FsTypeTable& types) {
    const std::string& type = entry.type;
    if (is_one_of(type, {"rootfs", "devfs", "tarnfs"})) {
        return std::nullopt;
    }
    if (is_one_of(type, {"smbfs", "usbfs", "iso9660", "nfs"})) {
        return MntFlags(true, true);
    }
    if (is_one_of(type, {"auto", "autofs", "subfs"}) || Kiln::contains(type, "fuse")) {
        return MntFlags(true, false);
    }
    if (is_detached(entry)) {
        return MntFlags(true, true);
    }
    const auto known = types.find(type);
    if (known != types.end() && known->second) {
        return MntFlags(false, true);
    }
    return std::nullopt;
}

// Only mounts of kernel file systems hide what lies below them; a mount excluded whole survives
// exactly two levels (ancestor/x/y) below such a one. Both are required.
bool covers(const MntFlags& ancestor, const MntFlags& flags, std::string_view below) {
    if (ancestor.flag) {
        return false;
    }
    const bool two_below = std::count(below.begin(), below.end(), '/') == 2;
    return !ancestor.contents_only || flags.contents_only || !two_below;
}

// Whether a proper ancestor of `path` in the table covers it. That of an absolute path begins with
// the empty text.
bool is_covered(const ExcludeTable& table, std::string_view path, const MntFlags& flags) {
    for (std::size_t slash = path.find('/'); slash != std::string_view::npos;
         slash = path.find('/', slash + 1)) {
        const auto ancestor = table.find(path.substr(0, slash));
        if (ancestor != table.end() && covers(ancestor->second, flags, path.substr(slash))) {
            return true;
        }
    }
    return false;
}

}  // namespace

void note_mount(const MountEntry& entry, const FsTypeTable& types, MountFindings& findings) {
    if (entry.type == "nfs") {
        findings.nfs_found = true;
    }
    if (entry.type == "reiserfs") {
        findings.reiserfs_found = true;
    }
    if (const std::optional<MntFlags> flags = classify(entry, types)) {
        findings.candidates[entry.mount_point] = *flags;
    }
}

void add_exclude_dir(ExcludeTable& table, std::string path, const MntFlags& flags) {
    while (!path.empty() && path.back() == '/') {
        path.pop_back();
    }
    if (!Kiln::contains(path, "/")) {  // the root, now empty, or no path at all
        return;
    }
    const auto root = table.find(std::string_view("/"));
    if (root != table.end() && !root->second.flag) {
        return;
    }
    if (!is_covered(table, path, flags)) {
        table[path] = flags;
    }
}

ExcludeTable refactor_excludes(const ExcludeTable& candidates) {
    ExcludeTable reduced;
    for (const auto& [path, flags] : candidates) {  // in path order: an ancestor comes first
        add_exclude_dir(reduced, path, flags);
    }
    return reduced;
}
