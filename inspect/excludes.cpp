#include "inspect/excludes.h"

#include <sys/stat.h>

#include <cstdint>
#include <string>

#include "inspect/exclude_rules.h"
#include "inspect/host_file.h"
#include "inspect/mount_table.h"

namespace {

constexpr std::int32_t reiserfs_warning_code = 4;
constexpr const char* reiserfs_warning =
    "Some of partitions contain reiserfs, which makes impossible to calculate the DISKINODES "
    "parameter. It will be set to an enough high value.";

constexpr std::int64_t login_record_limit_bytes = 1073741824;

FsTypeTable read_filesystem_types(const HostPaths& paths) {
    std::string text;
    if (read_host_file(paths.filesystems, text) != 0) {
        return {};
    }
    return parse_filesystem_types(text);
}

// The static table comes first, so that a live mount takes precedence on the same mount point.
MountFindings read_mounts(const HostPaths& paths) {
    const FsTypeTable types = read_filesystem_types(paths);
    MountFindings findings;
    for (const std::string& path : {paths.fstab, paths.mtab}) {
        const auto table = read_mount_table(path);
        if (table) {
            for (const MountEntry& entry : *table) {
                note_mount(entry, types, findings);
            }
        }
    }
    return findings;
}

std::vector<TarnAExcludePath> list_excludes(const ExcludeTable& reduced) {
    std::vector<TarnAExcludePath> excludes;
    excludes.reserve(reduced.size() + 1);
    for (const auto& [path, flags] : reduced) {
        excludes.push_back({flags.flag, flags.contents_only ? path + "/*" : path});
    }
    return excludes;
}

// The login record file is sparse and indexed by user id: a huge one is not worth copying.
void add_arch_excludes(const std::string& login_record, std::vector<TarnAExcludePath>& excludes) {
    struct stat info {};
    if (stat(login_record.c_str(), &info) == 0 && info.st_size > login_record_limit_bytes) {
        excludes.push_back({true, login_record});
    }
}

}  // namespace

ExcludeFindings find_excludes(const Host& host) {
    const MountFindings mounts = read_mounts(host.paths);
    ExcludeFindings findings;
    findings.nfs_found = mounts.nfs_found;
    findings.reiserfs_found = mounts.reiserfs_found;
    if (findings.reiserfs_found) {
        findings.warnings.push_back({reiserfs_warning_code, reiserfs_warning});
    }
    findings.excludes = list_excludes(refactor_excludes(mounts.candidates));
    add_arch_excludes(host.paths.login_record, findings.excludes);
    return findings;
}
