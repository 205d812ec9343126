// The exclusion step: what must not be copied from the host, taken from its mount tables and the
// login record file. The rules themselves are in exclude_rules.h.
#include <sys/stat.h>

#include <cstdint>
#include <string>
#include <vector>

#include "calc/tarn_hwcalc.h"
#include "inspect/exclude_rules.h"
#include "inspect/mount_table.h"
#include "kiln/files.h"

namespace {

constexpr std::int32_t reiserfs_warning_code = 4;
constexpr const char* reiserfs_warning =
    "Some of partitions contain reiserfs, which makes impossible to calculate the DISKINODES "
    "parameter. It will be set to an enough high value.";
constexpr std::int32_t reiserfs_diskinodes = 1000000;

constexpr const char* login_record_path = "/var/log/lastlog";
constexpr std::int64_t login_record_limit_bytes = 1073741824;

FsTypeTable read_filesystem_types() {
    std::string text;
    if (Kiln::get_file("/proc/filesystems", text) != 0) {
        return {};
    }
    return parse_filesystem_types(text);
}

// The static table comes first, so that a live mount takes precedence on the same mount point.
MountFindings read_mounts() {
    const FsTypeTable types = read_filesystem_types();
    MountFindings findings;
    for (const char* table : {"/etc/fstab", "/etc/mtab"}) {
        std::vector<MountEntry> entries;
        read_mount_table(table, entries);
        for (const MountEntry& entry : entries) {
            note_mount(entry, types, findings);
        }
    }
    return findings;
}

TarnHWCalc::Excludes list_excludes(const ExcludeTable& reduced) {
    TarnHWCalc::Excludes excludes;
    excludes.reserve(reduced.size() + 1);
    for (const auto& [path, flags] : reduced) {
        excludes.push_back({flags.flag, flags.contents_only ? path + "/*" : path});
    }
    return excludes;
}

// The login record file is sparse and indexed by user id: a huge one is not worth copying.
void add_arch_excludes(TarnHWCalc::Excludes& excludes) {
    struct stat info {};
    if (stat(login_record_path, &info) == 0 && info.st_size > login_record_limit_bytes) {
        excludes.push_back({true, login_record_path});
    }
}

}  // namespace

TarnHWCalc::Excludes TarnHWCalc::calcExcludes(PhysParams* params, Warnings& warnings) const {
    const MountFindings findings = read_mounts();
    if (findings.nfs_found) {
        params->nfs_used = true;
    }
    if (findings.reiserfs_found) {
        warnings.push_back({reiserfs_warning_code, reiserfs_warning});
        params->diskinodes = reiserfs_diskinodes;
    }
    Excludes excludes = list_excludes(refactor_excludes(findings.candidates));
    add_arch_excludes(excludes);
    return excludes;
}

TarnHWCalc::Excludes TarnHWCalc::compressExcludes(const Excludes& /*excludes*/) const {
    return {};
}
