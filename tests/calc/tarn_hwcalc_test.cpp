// The records of a run, the calculator's small helpers, and the codes of steps that fail.
#include "calc/tarn_hwcalc.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <functional>
#include <iterator>
#include <tuple>
#include <utility>

#include "tests/support/made_up_host.h"

// What the C library does with a name that is too long.
extern "C" int __wrap_gethostname(char* name, std::size_t size) {
    std::strncpy(name, "half", size);
    errno = ENAMETOOLONG;
    return -1;
}

namespace {

TEST(TarnHWCalc, BeginsWithItsSixMembersInTheirOrder) {
    const TarnHWCalc calc;
    const void* const members[] = {&calc,
                                   &calc.scan_period,
                                   &calc.mem_scale,
                                   &calc.disk_scale,
                                   &calc.dist_detect_scripts,
                                   calc.error_text,
                                   &calc.host};
    EXPECT_EQ(&calc.scan_time, members[0]);
    EXPECT_TRUE(std::is_sorted(std::begin(members), std::end(members), std::less<>()));
    EXPECT_TRUE(&calc.clock > members[5] && &calc.scan_observer > members[5]);
    EXPECT_EQ(std::tuple(calc.scan_time, calc.scan_period, calc.mem_scale, calc.disk_scale),
              std::tuple(0, 0, 1.2F, 1.5F));
}

TEST(TarnHWCalc, ReasonsBecomeCodes) {
    MadeUpHost made_up;
    TarnHWCalc calc;
    PhysParams profile;
    calc.host = made_up.host;
    made_up.put("7/status", "PPid:\t1\nVmSize:\t800 kB\nVmLck:\t400 kB\n");
    profile.privvmpages = 201;  // in an earlier pass
    EXPECT_EQ(calc.calcMemInfoByVmSize(&profile), 0);
    EXPECT_EQ(profile.privvmpages, 201);
    EXPECT_EQ(profile.lockedpages, 100);
    made_up.put("mtab", "none / reiserfs");
    profile.quotaugidlimit = 7;
    EXPECT_EQ(calc.calcQuotaUGIDLimit(&profile) + profile.quotaugidlimit, 0);
    calc.getDistribution(profile.notes.warnings);
    calc.calcExcludes(&profile, profile.notes.warnings);
    EXPECT_EQ(profile.notes.warnings.size(), 2U);

    calc.host.paths.mtab = "/nonexistent/mtab";
    EXPECT_EQ(calc.calcPhysParams(&profile), TarnHWCalc::ERR_MTAB);
    EXPECT_STREQ(calc.error_text, "Error opening '/nonexistent/mtab': No such file or directory");
    calc.host.paths.proc = "/nonexistent/proc";
    EXPECT_EQ(calc.calcMemInfoByVmSize(&profile), TarnHWCalc::ERR_PROC);
    EXPECT_EQ(calc.calcPhysParams(&profile), TarnHWCalc::ERR_PROC);
    EXPECT_STREQ(calc.error_text, "Error opening /nonexistent/proc: No such file or directory");
    made_up.answers["df -k -l"] = {2, "", "100%s" + std::string(5000, 'x')};
    calc.host.paths.proc = made_up.root;
    EXPECT_EQ(calc.calcPhysParams(&profile), TarnHWCalc::ERR_EXEC);
    EXPECT_EQ(calc.error_text, "Error running 'df -k -l':\n100%s" + std::string(4064, 'x'));
    EXPECT_FALSE(kernel_host_name());
}

TEST(NetIfaceList, EthernetInterfacesAsText) {
    NetIfaceList list;
    list.push_back({1, "tun0", {}, false});
    list.push_back({2, "eth0", {}, true});
    list.push_back({2, "eth1", {}, false});
    // The separator before the first ethernet interface is part of the rule.
    EXPECT_EQ(list.get_netif(), ";ifname=eth0,dhcp=yes;ifname=eth1");
    list.erase(list.begin());
    EXPECT_EQ(list.get_netif(), "ifname=eth0,dhcp=yes;ifname=eth1");
}

TEST(TarnHWCalc, RaisesAndTruncatesForOthersToo) {
    std::int32_t counter = -5;
    for (const auto& [value, raised] : {std::pair(-6, -5), {7, 7}, {-1, 7}}) {
        TarnHWCalc::set_max(counter, value);
        EXPECT_EQ(counter, raised) << value;
    }
    EXPECT_EQ(TarnHWCalc::check_overflow_parameter("NUMPROC", 3e9F), 2147483647);
}

TEST(TarnHWCalc, PrintsTheProfileUnsigned) {
    PhysParams p;
    p.diskspace = -1;
    testing::internal::CaptureStdout();
    TarnHWCalc().printPhysParams(p);
    EXPECT_NE(testing::internal::GetCapturedStdout().find("\ndiskspace: 4294967295\ndiskinodes: 0"),
              std::string::npos);
}

}  // namespace
