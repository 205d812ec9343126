// The distribution's interface files: finding them in every way, and what they mark.
#include "sysconfig.h"

#include <sys/stat.h>

#include "inventory_host.h"
#include "netinfo/records.h"
#include "state.h"

namespace {

const std::string kScripts = "/etc/sysconfig/network-scripts/";
const std::string kNetwork = "/etc/sysconfig/network/";
constexpr const char* kMac = "00:11:22:33:44:55";

using private_host::write_file;

std::string found(const char* name, uint32_t kind = IFT_ETHERNET, const char* hwaddr = nullptr) {
    char* path = find_sysconfig(name, kind, hwaddr);
    std::string text = path != nullptr ? path : "none";
    free(path);
    return text;
}

TEST(IfcfgLine, AsksForDhcpAndNamesADevice) {
    for (const char* line :
         {"BOOTPROTO=dhcp\n", " \t\v\fBOOTPROTO='dhcp'", "BOOTPROTO=none # not dhcp"})
        EXPECT_TRUE(ifcfg_line_asks_dhcp(line)) << line;
    for (const char* line : {"bootproto=dhcp", "BOOTPROTO=DHCP", "#dhcp BOOTPROTO=none", ""})
        EXPECT_FALSE(ifcfg_line_asks_dhcp(line)) << line;
    for (const char* line : {"DEVICE=eth0", "DEVICE=eth0\r\n", "DEVICE=eth0 x"})
        EXPECT_TRUE(ifcfg_line_names_device(line, "eth0")) << line;
    for (const char* line : {"DEVICE=eth01", "DEVICE=\"eth0\"", " DEVICE=eth0", "DEVICE="})
        EXPECT_FALSE(ifcfg_line_names_device(line, "eth0")) << line;
}

TEST(FindSysconfig, TakesTheFileOfThatNameFromEitherDirectory) {
    private_host::run([] {
        EXPECT_EQ(found("eth0"), "none");
        write_file(kNetwork + "ifcfg-eth0", "");
        EXPECT_EQ(found("eth0"), kNetwork + "ifcfg-eth0");
        write_file(kScripts + "ifcfg-eth0", "");
        EXPECT_EQ(found("eth0"), kScripts + "ifcfg-eth0");
        EXPECT_EQ(found("eth1"), "none");
        EXPECT_EQ(found(nullptr), "none");

        ASSERT_EQ(symlink("nowhere", (kScripts + "ifcfg-eth2").c_str()), 0);
        EXPECT_EQ(found("eth2"), "none") << "a dangling link is no file";
        write_file(kNetwork + "ifcfg-a/b", "");
        EXPECT_EQ(found("a/b"), kNetwork + "ifcfg-a/b");
        EXPECT_EQ(found(std::string(600, 'x').c_str()), "none");
    });
}

TEST(FindSysconfig, OnSuseGoesByTheHardwareAddress) {
    private_host::run([] {
        libtarnnet_state.suse = 1;
        const std::string by_mac = std::string("ifcfg-") + kMac;
        EXPECT_EQ(found("eth0", IFT_ETHERNET, kMac), "none");
        write_file(kNetwork + by_mac, "");
        write_file(kNetwork + "route-" + kMac, "");
        EXPECT_EQ(found("eth0", IFT_ETHERNET, kMac), kNetwork + by_mac);
        EXPECT_EQ(found("eth0", IFT_VLAN, kMac), "none");
        EXPECT_EQ(found("eth0"), "none");

        write_file(kNetwork + "ifcfg-wlan-id-" + kMac, "");
        write_file(kNetwork + "ifcfg-eth-id-" + kMac, "");
        write_file(kNetwork + "ifcfg-xeth-id-" + kMac, "");
        EXPECT_EQ(found("eth0", IFT_ETHERNET, kMac), kNetwork + "ifcfg-eth-id-" + kMac);
        EXPECT_EQ(found("en0", IFT_ETHERNET, kMac), "none");
        EXPECT_EQ(found("0eth", IFT_ETHERNET, kMac), kNetwork + by_mac) << "no letters fit any";
    });
}

TEST(FindSysconfig, ElsewhereGoesByTheDeviceLineOfTheBareName) {
    private_host::run([] {
        write_file(kScripts + "ifcfg-lan", "DEVICE=eth0\n");
        write_file(kScripts + "ifcfg-wan", "# wan\nDEVICE=eth1 \nDEVICE=eth2");
        write_file(kScripts + "other", "DEVICE=eth3\n");
        ASSERT_EQ(chdir("/etc"), 0);
        EXPECT_EQ(found("eth0"), "none") << "the files are sought in the working directory";
        ASSERT_EQ(chdir(kScripts.c_str()), 0);
        EXPECT_EQ(found("eth0"), kScripts + "ifcfg-lan");
        EXPECT_EQ(found("eth1"), kScripts + "ifcfg-wan");
        EXPECT_EQ(found("eth2"), kScripts + "ifcfg-wan");
        EXPECT_EQ(found("eth3"), "none");

        // Files of the same names elsewhere are what is read, whatever they are.
        write_file("/etc/cwd/ifcfg-wan", "DEVICE=eth9\n");
        ASSERT_EQ(mkfifo("/etc/cwd/ifcfg-lan", 0600), 0);
        ASSERT_EQ(chdir("/etc/cwd"), 0);
        EXPECT_EQ(found("eth9"), kScripts + "ifcfg-wan");
    });
}

TEST(CheckSysconf, MarksTheDhcpInterfacesAndBringsThemToTheHead) {
    private_host::run([] {
        use_origin(0, ORIGIN_CONF);
        update_tarnnetif_info("eth0", 0, IFU_CONF_ADDRESSES, text_value("10.0.0.1"));
        update_tarnnetif_info("eth1", 0, IFU_CONF_ADDRESSES, text_value("10.0.0.2"));
        use_origin(0, ORIGIN_LIVE);
        for (const char* name : {"eth2", "eth3", "eth4", "eth5"})
            update_tarnnetif_info(name, 0, IFU_STATE, number_value(1));
        update_tarnnetif_info("eth0", 7, IFU_STATE, number_value(1));
        write_file(kScripts + "ifcfg-eth0", "DEVICE=eth0\n  BOOTPROTO=dhcp\nBOOTPROTO='dhcp'");
        write_file(kScripts + "ifcfg-eth1", "BOOTPROTO=static\n");
        write_file(kNetwork + "ifcfg-eth3",
                   std::string(65535, '#') + "BOOTPROTO=dhcp6\n" + std::string("\0\n", 2));
        write_file(kNetwork + "ifcfg-eth4/file", "BOOTPROTO=dhcp\n");
        write_file(kNetwork + "ifcfg-eth5", std::string(70000, '#') + "BOOTPROTO=dhcp\n");

        EXPECT_EQ(check_sysconf(), 0);
        // The snapshot runs from the newest record to the oldest, so eth0 is marked last.
        const inventory_host::Lines expected = {
            "eth0 1 [] [dhcp,dhcp]", "eth3 1 [] [dhcp]", "7:eth0 1 [] []",      "eth5 1 [] []",
            "eth4 1 [] []",          "eth2 1 [] []",     "eth1 1 [] [10.0.0.2]"};
        EXPECT_EQ(inventory_host::lines_of(get_cached_info(nullptr)), expected);
    });
}

}  // namespace
