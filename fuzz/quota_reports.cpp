// Reports of the quota tools, and grace times.
#include "fuzz/support.h"
#include "inspect/quota_mgmt.h"

// Input: a report, a grace time.
void try_input(fuzz::Input input) {
    const std::vector<std::string> parts = input.sections(2);
    const std::string& report = parts[0];
    Quotas users;
    Quotas groups;
    require(QuotaMgmt::limits_parse_phys(report, &users, &groups) == 0, "always succeeds");
    const auto records = users.quotas.size() + groups.quotas.size();
    const auto marks = static_cast<std::size_t>(std::count(report.begin(), report.end(), '#'));
    require(records <= marks, "a record line begins with its mark");

    const Quotas first = users;
    QuotaMgmt::limits_parse_phys(report, &users, &groups);
    require(users.quotas == first.quotas, "what an earlier report said is replaced");

    const std::string grace = parts[1].c_str();
    const std::uint64_t seconds = QuotaMgmt::grace_atoll(grace.c_str());
    require(grace.find_first_not_of(" \t") != std::string::npos || seconds == 0,
            "a blank grace time is none");
}
