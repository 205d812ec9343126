// The records of a run, the calculator's small helpers, and the codes of steps that fail.
#include "calc/tarn_hwcalc.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "tests/calc/made_up_host.h"

// What the C library does with a name that is too long.
extern "C" int __wrap_gethostname(char* name, std::size_t size) {
    std::strncpy(name, "half", size);
    errno = ENAMETOOLONG;
    return -1;
}

namespace {

TEST(Host, ANameThatCannotBeReadIsNone) {
    EXPECT_FALSE(kernel_host_name());
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
    calc.host.paths.mtab = "/nonexistent/mtab";
    EXPECT_EQ(calc.calcPhysParams(&profile), TarnHWCalc::ERR_MTAB);
    EXPECT_STREQ(calc.error_text, "Error opening '/nonexistent/mtab': No such file or directory");
    calc.host.paths.proc = "/nonexistent/proc";
    EXPECT_EQ(calc.calcMemInfoByVmSize(&profile), TarnHWCalc::ERR_PROC);
    EXPECT_EQ(calc.calcPhysParams(&profile), TarnHWCalc::ERR_PROC);
    EXPECT_STREQ(calc.error_text, "Error opening /nonexistent/proc: No such file or directory");
    EXPECT_EQ(profile.privvmpages, 200);
    made_up.answers["df -k -l"] = {2, "", "100%s" + std::string(5000, 'x')};
    calc.host.paths.proc = made_up.root;
    EXPECT_EQ(calc.calcPhysParams(&profile), TarnHWCalc::ERR_EXEC);
    EXPECT_EQ(calc.error_text, "Error running 'df -k -l':\n100%s" + std::string(4064, 'x'));
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
