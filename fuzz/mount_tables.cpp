// Mount tables with the kernel's list of file system types, and the paths that they exclude.
#include <tuple>

#include "fuzz/support.h"
#include "inspect/exclude_rules.h"
#include "inspect/mount_table.h"

namespace {

using Exclude = ExcludeTable::value_type;

// Whether one path hides another, which lies below it.
bool hides(const Exclude& above, const Exclude& below) {
    const std::string path = below.first.substr(above.first.size());
    return !above.second.flag && (!above.second.contents_only || below.second.contents_only ||
                                  std::count(path.begin(), path.end(), '/') != 2);
}

// With more than one slash at its end a mount sorts behind what lies below it, which then stays.
bool comes_late(const Exclude& candidate) {
    const std::string& path = candidate.first;
    return path.size() > 2 && path.compare(path.size() - 2, 2, "//") == 0;
}

bool same(const Exclude& a, const Exclude& b) {
    return std::tie(a.first, a.second.flag, a.second.contents_only) ==
           std::tie(b.first, b.second.flag, b.second.contents_only);
}

void check_reduced(const ExcludeTable& reduced) {
    for (const Exclude& exclude : reduced) {
        const std::string& path = exclude.first;
        require(path.size() > 1 && path.back() != '/', "no root and no trailing slash");
        for (std::size_t end = path.find('/'); end != path.npos; end = path.find('/', end + 1)) {
            const auto above = reduced.find(path.substr(0, end));
            require(above == reduced.end() || !hides(*above, exclude),
                    "no path is listed below one that hides it");
        }
    }
    const ExcludeTable again = refactor_excludes(reduced);
    require(std::equal(again.begin(), again.end(), reduced.begin(), reduced.end(), same),
            "a reduced table is reduced");
}

}  // namespace

// Input: the list of types, the mount table.
void try_input(fuzz::Input input) {
    const std::vector<std::string> parts = input.sections(2);
    const FsTypeTable types = parse_filesystem_types(parts[0]);
    MountFindings findings;
    for (const MountEntry& entry : parse_mount_table(parts[1])) {
        note_mount(entry, types, findings);
    }
    const ExcludeTable reduced = refactor_excludes(findings.candidates);
    if (std::none_of(findings.candidates.begin(), findings.candidates.end(), comes_late)) {
        check_reduced(reduced);
    }
}
