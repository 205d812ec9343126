// The records of a run, the calculator's small helpers, and the codes of steps that fail.
#include "calc/tarn_hwcalc.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <limits>

#include "tests/calc/made_up_host.h"

// A host name that is too long: a part of it is stored all the same.
namespace {
bool name_is_too_long = false;
}
extern "C" int __real_gethostname(char* name, std::size_t size);
extern "C" int __wrap_gethostname(char* name, std::size_t size) {
    if (!name_is_too_long) {
        return __real_gethostname(name, size);
    }
    std::strncpy(name, "half", size);
    errno = ENAMETOOLONG;
    return -1;
}

namespace {

TEST(Host, ANameThatCannotBeReadIsNone) {
    EXPECT_TRUE(kernel_host_name());
    name_is_too_long = true;
    EXPECT_FALSE(kernel_host_name());
    name_is_too_long = false;
}

TEST(TarnHWCalc, ReasonsBecomeCodes) {
    MadeUpHost made_up;
    TarnHWCalc calc;
    PhysParams profile;
    calc.host = made_up.host;
    made_up.process("7", "PPid:\t1\nVmSize:\t800 kB\nVmLck:\t400 kB\n");
    EXPECT_EQ(calc.calcMemInfoByVmSize(&profile), 0);
    EXPECT_EQ(profile.privvmpages, 200);
    EXPECT_EQ(profile.lockedpages, 100);
    made_up.process("7", "");
    EXPECT_EQ(calc.calcMemInfoByVmSize(&profile), 0);
    EXPECT_EQ(profile.privvmpages, 200) << "only ever raised";

    calc.host.paths.mtab = "/nonexistent/mtab";
    EXPECT_EQ(calc.calcPhysParams(&profile), TarnHWCalc::ERR_MTAB);
    EXPECT_STREQ(calc.error_text, "Error opening '/etc/mtab': No such file or directory");
    calc.host.paths.proc = "/nonexistent/proc";
    EXPECT_EQ(calc.calcMemInfoByVmSize(&profile), TarnHWCalc::ERR_PROC);
    EXPECT_EQ(calc.calcPhysParams(&profile), TarnHWCalc::ERR_PROC);
    EXPECT_STREQ(calc.error_text, "Error opening /nonexistent/proc: No such file or directory");
    EXPECT_EQ(profile.privvmpages, 200);
    made_up.answers["wc -l < /proc/net/tcp"] = {2, "", "100% no\n"};
    EXPECT_EQ(calc.calcPhysParams(&profile), TarnHWCalc::ERR_EXEC);
    EXPECT_STREQ(calc.error_text, "Error running 'wc -l < /proc/net/tcp':\n100% no\n");
}

TEST(TarnHWCalc, ReiserfsAndNfsChangeTheProfile) {
    MadeUpHost made_up;
    TarnHWCalc calc;
    PhysParams profile;
    calc.host = made_up.host;
    std::ofstream(calc.host.paths.mtab) << "/dev/a / ext4 rw 0 0\n";
    calc.calcExcludes(&profile, profile.notes.warnings);
    EXPECT_EQ(profile.diskinodes, 0);
    EXPECT_FALSE(profile.nfs_used);
    std::ofstream(calc.host.paths.mtab) << "/dev/a / reiserfs rw 0 0\nbox:/ /x nfs rw 0 0\n";
    EXPECT_EQ(calc.calcExcludes(&profile, profile.notes.warnings).size(), 1U);
    EXPECT_EQ(profile.diskinodes, 1000000);
    EXPECT_TRUE(profile.nfs_used);
    EXPECT_EQ(profile.notes.warnings.size(), 1U);
}

TEST(NetIfaceList, AddressesAndEthernetInterfacesAsText) {
    NetIfaceList list;
    EXPECT_EQ(list.get_ip(), "");
    list.push_back({1, "tun0", {"10.9.0.1"}, false});
    list.push_back({2, "eth0", {}, true});
    list.push_back({2, "eth1", {"192.0.2.1", "2001:db8::1"}, false});
    EXPECT_EQ(list.get_ip(), "10.9.0.1 192.0.2.1 2001:db8::1 ");
    // The separator before the first ethernet interface is part of the rule.
    EXPECT_EQ(list.get_netif(), ";ifname=eth0,dhcp=yes;ifname=eth1");
    list.erase(list.begin());
    EXPECT_EQ(list.get_netif(), "ifname=eth0,dhcp=yes;ifname=eth1");
}

TEST(TarnHWCalc, SetMaxComparesSigned) {
    std::int32_t counter = 5;
    TarnHWCalc::set_max(counter, -1);
    EXPECT_EQ(counter, 5);
    TarnHWCalc::set_max(counter, std::numeric_limits<std::int32_t>::max());
    TarnHWCalc::set_max(counter, 6);
    EXPECT_EQ(counter, std::numeric_limits<std::int32_t>::max());
}

TEST(TarnHWCalc, ErrorTextIsCutAndTheCodeReturned) {
    TarnHWCalc calc;
    EXPECT_EQ(calc.setError(TarnHWCalc::ERR_EXEC, "Error running '%s':\n%s", "df -k -l", "no"), 2);
    EXPECT_STREQ(calc.error_text, "Error running 'df -k -l':\nno");
    const std::string text(5000, 'x');
    EXPECT_EQ(calc.setError(TarnHWCalc::ERR_MTAB, "%s", text.c_str()), 4);
    EXPECT_EQ(std::string(calc.error_text), std::string(4095, 'x'));
}

TEST(TarnHWCalc, PrintsTheProfileUnsigned) {
    PhysParams p;
    p.numproc = 7;
    p.diskspace = -1;
    p.hostname = "db1";
    p.ns_attrs.nameservers = {"192.0.2.1", "192.0.2.2"};
    testing::internal::CaptureStdout();
    TarnHWCalc().printPhysParams(p);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "numproc: 7\nnumtcpsock: 0\nnumothersock: 0\nnumfile: 0\nprivvmpages: 0\n"
              "lockedpages: 0\nshmpages: 0\nnumflock: 0\nnumiptent: 0\ndiskspace: 4294967295\n"
              "diskinodes: 0\nquotaugidlimit: 0\ndistribution: \nhostname: db1\n"
              "nameservers: 192.0.2.1 192.0.2.2\nsearch_domains: \n");
}

}  // namespace
