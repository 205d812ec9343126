// The exclusion step: what must not be copied from the host, taken from its mount tables and the
// login record file. The rules themselves are in exclude_rules.h.
#pragma once

#include <vector>

#include "inspect/host.h"
#include "inspect/records.h"

struct ExcludeFindings {
    std::vector<TarnAExcludePath> excludes;  // mounts in path order, then the login record file
    std::vector<TarnACalculateHWNodeWarning> warnings;
    bool nfs_found = false;       // a mount of type "nfs"
    bool reiserfs_found = false;  // the inodes in use cannot be measured
};

// Cannot fail: a table that cannot be read excludes nothing.
ExcludeFindings find_excludes(const Host& host);
