// The quota step: how many users and groups of the host have quota records.
#include <cstdint>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "calc/tarn_hwcalc.h"
#include "inspect/mount_table.h"
#include "inspect/quota_mgmt.h"
#include "kiln/strings.h"

namespace {

constexpr const char* old_style_option = "quota";

// The first option that switches quotas on, or the empty text. Later ones do not count on purpose:
// "usrquota,quota" is not the old style.
std::string quota_option(const MountEntry& entry) {
    for (const std::string& option : Kiln::split(",", entry.options, 0)) {
        if (option == "usrquota" || option == "grpquota" || option == old_style_option) {
            return option;
        }
    }
    return {};
}

void add_ids(const Quotas& records, std::set<std::uint32_t>& ids) {
    for (const auto& record : records.quotas) {
        ids.insert(record.first);
    }
}

// The ids that have quota records on any of the devices. A device whose quotas cannot be read adds
// nothing; that has been logged.
void collect_ids(const std::vector<std::string>& devices, std::set<std::uint32_t>& user_ids,
                 std::set<std::uint32_t>& group_ids) {
    Quotas users;
    Quotas groups;
    for (const std::string& device : devices) {
        std::string limits;
        std::string graces;
        if (QuotaMgmt::quota_get_phys(device.c_str(), limits, graces) != 0) {
            continue;
        }
        QuotaMgmt::limits_parse_phys(limits, &users, &groups);
        add_ids(users, user_ids);
        add_ids(groups, group_ids);
    }
}

}  // namespace

int TarnHWCalc::calcQuotaUGIDLimit(PhysParams* params) {
    std::vector<MountEntry> mounts;
    if (const int error = read_mount_table("/etc/mtab", mounts)) {
        return setError(ERR_MTAB, "Error opening '/etc/mtab': %s", std::strerror(error));
    }
    std::vector<std::string> devices;
    bool old_style = false;
    for (const MountEntry& mount : mounts) {
        const std::string option = quota_option(mount);
        if (!option.empty()) {
            devices.push_back(mount.device);
            old_style = old_style || option == old_style_option;
        }
    }
    std::set<std::uint32_t> user_ids;
    std::set<std::uint32_t> group_ids;
    collect_ids(devices, user_ids, group_ids);
    const auto users = static_cast<std::uint32_t>(user_ids.size());
    const auto groups = static_cast<std::uint32_t>(group_ids.size());
    // The old style does not tell the kinds apart: as many groups as users are expected.
    params->quotaugidlimit = static_cast<std::int32_t>(users + (old_style ? users : groups));
    return 0;
}
