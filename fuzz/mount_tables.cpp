// Mount tables with the kernel's list of file system types, and the paths that they exclude.
#include <algorithm>
#include <utility>

#include "fuzz/support.h"
#include "inspect/exclude_rules.h"
#include "inspect/mount_table.h"

namespace {

// Whether the mount at `ancestor` hides the one at `path`, which lies below it.
bool hides(const MntFlags& above, const std::string& ancestor, const MntFlags& below,
           const std::string& path) {
    const auto levels =
        std::count(path.begin() + static_cast<std::ptrdiff_t>(ancestor.size()), path.end(), '/');
    return !above.flag && (!above.contents_only || below.contents_only || levels != 2);
}

// With more than one slash at its end a mount sorts behind what lies below it, which then stays.
bool comes_late(const std::pair<const std::string, MntFlags>& candidate) {
    const std::string& path = candidate.first;
    return path.size() > 2 && path.compare(path.size() - 2, 2, "//") == 0;
}

void check_reduced(const ExcludeTable& reduced) {
    for (const auto& [path, flags] : reduced) {
        fuzz::require(path.size() > 1 && path.back() != '/', "no root and no trailing slash");
        for (std::size_t slash = path.find('/'); slash != std::string::npos;
             slash = path.find('/', slash + 1)) {
            const auto above = reduced.find(path.substr(0, slash));
            fuzz::require(
                above == reduced.end() || !hides(above->second, above->first, flags, path),
                "no path is listed below one that hides it");
        }
    }
    const ExcludeTable again = refactor_excludes(reduced);
    const auto same = [](const auto& a, const auto& b) {
        return a.first == b.first && a.second.flag == b.second.flag &&
               a.second.contents_only == b.second.contents_only;
    };
    fuzz::require(std::equal(again.begin(), again.end(), reduced.begin(), reduced.end(), same),
                  "a reduced table is reduced");
}

}  // namespace

// Input: the list of types, the mount table.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<std::string> parts = fuzz::sections(data, size, 2);
    const FsTypeTable types = parse_filesystem_types(parts[0]);
    MountFindings findings;
    for (const MountEntry& entry : parse_mount_table(parts[1])) {
        note_mount(entry, types, findings);
    }
    const ExcludeTable reduced = refactor_excludes(findings.candidates);
    if (std::none_of(findings.candidates.begin(), findings.candidates.end(), comes_late)) {
        check_reduced(reduced);
    }
    return 0;
}
