// Reading the host's disk quotas: asking the quota tools for their reports (quota_mgmt.cpp) and
// parsing what they print (quota_report.cpp). Used by the quota count; sets no quota.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>

#include "inspect/host.h"

// A limit of one resource. Zero means none.
struct QLimit {
    std::uint64_t soft = 0;   // KiB blocks as reported, or inodes
    std::uint64_t hard = 0;   // the same
    std::uint64_t grace = 0;  // seconds that remain
};

inline bool operator==(const QLimit& a, const QLimit& b) {
    return a.soft == b.soft && a.hard == b.hard && a.grace == b.grace;
}

// What one user or group may take.
struct Quota {
    QLimit blocks;
    QLimit inodes;
};

inline bool operator==(const Quota& a, const Quota& b) {
    return a.blocks == b.blocks && a.inodes == b.inodes;
}

// The users or the groups of one file system.
struct Quotas {
    std::map<std::uint32_t, Quota> quotas;  // by user or group id
    std::uint64_t block_grace = 0;          // seconds; no part of the run sets the two periods
    std::uint64_t inode_grace = 0;
};

// The quota operations of one host. Those that return an int return 0 on success.
class QuotaMgmt {
public:
    explicit QuotaMgmt(Host host = {}) : host_(std::move(host)) {}

    // Whether user and group quotas are switched on for `name`, a device or a mount point, and
    // where it is mounted, from the live mount table. Returns -1 after logging why; the two flags
    // are then false and the mount point is as it was.
    int quota_is_enabled_phys(const char* name, bool& usr, bool& grp,
                              std::string* mount_point) const;

    // The raw reports of the quota tools for a device: `limits` of the ids and `graces` of the
    // whole file system, users first, empty without quotas. A mount point that the shell would not
    // hand on as it is fails. Returns -1 after logging why; the two texts are then not to be used.
    int quota_get_phys(const char* device, std::string& limits, std::string& graces) const;

    // Replaces both record maps by what limit reports say; damaged lines give what can be read of
    // them. Always returns 0.
    static int limits_parse_phys(const std::string& text, Quotas* usr, Quotas* grp);

    // A grace time as the tools print it ("6days", "23:59"), in seconds.
    static std::uint64_t grace_atoll(const char* text);

private:
    Host host_;
};
