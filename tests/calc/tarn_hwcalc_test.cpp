// The records of a run, the calculator's small helpers, and the codes of steps that fail.
#include "calc/tarn_hwcalc.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <tuple>
#include <utility>

#include "tests/support/made_up_host.h"

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

TEST(TarnHWCalc, FillsTheProfileOrSaysWhyNot) {
    MadeUpHost made_up;
    TarnHWCalc calc;
    PhysParams profile;
    calc.host = made_up.host;
    made_up.put("7/status", "PPid:\t1\nVmSize:\t800 kB\nVmLck:\t400 kB\n");
    profile.privvmpages = 201;  // in an earlier pass
    EXPECT_EQ(calc.calcMemInfoByVmSize(&profile), 0);
    EXPECT_EQ(std::pair(profile.privvmpages, profile.lockedpages), std::pair(201, 100));
    made_up.put("mtab", "none / reiserfs\nauto /a autofs\np /p proc");
    made_up.put("types", "nodev\tproc");
    profile.quotaugidlimit = 7;
    EXPECT_EQ(calc.calcQuotaUGIDLimit(&profile) + profile.quotaugidlimit, 0);
    const auto excludes = calc.calcExcludes(&profile, profile.notes.warnings);
    EXPECT_TRUE(excludes.at(0).flag && !excludes.at(1).flag);
    EXPECT_EQ(profile.notes.warnings.at(0).code, 4);

    calc.host.paths.mtab = made_up.root;
    EXPECT_EQ(calc.calcPhysParams(&profile), TarnHWCalc::ERR_MTAB);
    EXPECT_EQ(calc.error_text, "Error opening '" + made_up.root + "': Is a directory");
    made_up.answers["df -k -l"] = {2, "", "100%s" + std::string(5000, 'x')};
    EXPECT_EQ(calc.calcPhysParams(&profile), TarnHWCalc::ERR_EXEC);
    EXPECT_EQ(calc.error_text, "Error running 'df -k -l':\n100%s" + std::string(4064, 'x'));
}

TEST(TarnHWCalc, AsksTheDetectionScriptsInOrderAndTheDefaultOneLast) {
    MadeUpHost made_up;
    TarnHWCalc calc;
    calc.host = made_up.host;
    calc.dist_detect_scripts = {made_up.path("a"), made_up.path("b")};
    TarnHWCalc::Warnings warnings;
    made_up.put("a", "echo a; exit 3");
    made_up.put("detect", "echo last");
    EXPECT_EQ(calc.getDistribution(warnings), "last");
    made_up.put("b", "");
    EXPECT_EQ(calc.getDistribution(warnings), "") << "an empty answer ends the search as well";
    EXPECT_EQ(warnings.at(0).code, 0);
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
    PhysParams p;
    p.diskspace = -5;
    for (const auto& [value, raised] : {std::pair(-6, -5), {-1, -1}, {-2, -1}}) {
        TarnHWCalc::set_max(p.diskspace, value);
        EXPECT_EQ(p.diskspace, raised) << value;
    }
    EXPECT_EQ(TarnHWCalc::check_overflow_parameter("NUMPROC", 3e9F), 2147483647);
}

}  // namespace
