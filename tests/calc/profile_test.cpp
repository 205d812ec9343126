// The records of a run and the calculator's small helpers.
#include <gtest/gtest.h>

#include <limits>

#include "calc/tarn_hwcalc.h"

namespace {

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
