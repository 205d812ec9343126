// Reports of the quota tools, and grace times.
#include <algorithm>
#include <cstring>

#include "fuzz/support.h"
#include "inspect/quota_mgmt.h"

namespace {

void check_grace(const std::string& text) {
    const std::uint64_t seconds = QuotaMgmt::grace_atoll(text.c_str());
    const bool blank = text.find_first_not_of(" \t") == std::string::npos;
    fuzz::require(!blank || seconds == 0, "a blank grace time is none");
}

}  // namespace

// Input: a report, a grace time.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<std::string> parts = fuzz::sections(data, size, 2);
    const std::string& report = parts[0];
    Quotas users;
    Quotas groups;
    fuzz::require(QuotaMgmt::limits_parse_phys(report, &users, &groups) == 0, "always succeeds");
    const auto records = users.quotas.size() + groups.quotas.size();
    const auto marks = static_cast<std::size_t>(std::count(report.begin(), report.end(), '#'));
    fuzz::require(records <= marks, "a record line begins with its mark");

    const Quotas first = users;
    QuotaMgmt::limits_parse_phys(report, &users, &groups);
    fuzz::require(users.quotas == first.quotas, "what an earlier report said is replaced");
    check_grace(std::string(parts[1].c_str()));
    return 0;
}
