#include "inspect/quota_count.h"

#include <set>
#include <string>
#include <vector>

#include "inspect/mount_table.h"
#include "inspect/quota_mgmt.h"
#include "kiln/strings.h"

namespace {

constexpr const char* old_style_option = "quota";

// The first option that switches quotas on, or the empty text. It alone tells the style:
// "usrquota,quota" is not the old one.
std::string quota_option(const MountEntry& entry) {
    for (const std::string& option : Kiln::split(",", entry.options, 0)) {
        if (option == "usrquota" || option == "grpquota" || option == old_style_option) {
            return option;
        }
    }
    return {};
}

struct QuotaIds {
    std::set<std::uint32_t> users;
    std::set<std::uint32_t> groups;
};

void add_ids(const Quotas& records, std::set<std::uint32_t>& ids) {
    for (const auto& record : records.quotas) {
        ids.insert(record.first);
    }
}

// Adds the ids that have quota records on the device; none when they cannot be read, which has been
// logged then.
void add_device(const QuotaMgmt& quota_mgmt, const std::string& device, QuotaIds& ids) {
    std::string limits;
    std::string graces;
    if (quota_mgmt.quota_get_phys(device.c_str(), limits, graces) != 0) {
        return;
    }
    Quotas users;
    Quotas groups;
    QuotaMgmt::limits_parse_phys(limits, &users, &groups);
    add_ids(users, ids.users);
    add_ids(groups, ids.groups);
}

}  // namespace

Kiln::Result<std::uint32_t> count_quota_ids(const Host& host) {
    const auto table = read_mount_table(host.paths.mtab);
    if (!table) {
        return Kiln::Reason{"Error opening '" + host.paths.mtab + "': " + table.reason()};
    }
    const QuotaMgmt quota_mgmt(host);
    QuotaIds ids;
    bool old_style = false;
    for (const MountEntry& mount : *table) {
        const std::string option = quota_option(mount);
        if (!option.empty()) {  // a device that is mounted twice is asked twice; ids count once
            add_device(quota_mgmt, mount.device, ids);
            old_style = old_style || option == old_style_option;
        }
    }
    const auto users = static_cast<std::uint32_t>(ids.users.size());
    const auto groups = static_cast<std::uint32_t>(ids.groups.size());
    // One mount of the old style is enough to count all users twice and no group, as required.
    return old_style ? 2 * users : users + groups;
}
