// The distribution's interface files: finding them in every way, and what they mark.
#include "sysconfig.h"

#include <sys/stat.h>

#include "inventory_host.h"
#include "state.h"

namespace {

const std::string kScripts = "/etc/sysconfig/network-scripts/";
const std::string kNetwork = "/etc/sysconfig/network/";
constexpr const char* kMac = "00:11:22:33:44:55";

using private_host::write_file;

std::string found(const char* name, const char* hwaddr = kMac, uint32_t kind = IFT_ETHERNET) {
    char* path = find_sysconfig(name, kind, hwaddr);
    std::string text = path != nullptr ? path : "none";
    free(path);
    return text;
}

TEST(IfcfgLine, AsksForDhcpAndNamesADevice) {
    EXPECT_TRUE(ifcfg_line_asks_dhcp(" \t\v\fBOOTPROTO=none # not dhcp"));
    EXPECT_FALSE(ifcfg_line_asks_dhcp("#dhcp BOOTPROTO=none"));
    for (const char* line : {"DEVICE=eth0", "DEVICE=eth0\r\n", "DEVICE=eth0 x"})
        EXPECT_TRUE(ifcfg_line_names_device(line, "eth0")) << line;
    for (const char* line : {"DEVICE=eth01", "DEVICE=\"eth0\"", " DEVICE=eth0", "DEVICE="})
        EXPECT_FALSE(ifcfg_line_names_device(line, "eth0")) << line;
}

TEST(FindSysconfig, TakesTheFileOfThatNameOrOneThatNamesTheDevice) {
    private_host::run([] {
        EXPECT_EQ(found("eth0"), "none");
        write_file(kNetwork + "ifcfg-eth0", "");
        EXPECT_EQ(found("eth0"), kNetwork + "ifcfg-eth0");
        write_file(kScripts + "ifcfg-eth0", "");
        EXPECT_EQ(found("eth0"), kScripts + "ifcfg-eth0");
        ASSERT_EQ(symlink("nowhere", (kScripts + "ifcfg-eth2").c_str()), 0);
        EXPECT_EQ(found("eth2"), "none") << "a dangling link is no file";

        write_file(kScripts + "ifcfg-wan", "DEVICE=eth1\n");
        EXPECT_EQ(found("eth1"), "none") << "the files are sought in the working directory";
        ASSERT_EQ(chdir(kScripts.c_str()), 0);
        EXPECT_EQ(found("eth1"), kScripts + "ifcfg-wan");
        // Files of the same names elsewhere are what is read, whatever they are.
        write_file("/etc/cwd/ifcfg-wan", "# wan\nDEVICE=eth8 \nDEVICE=eth9");
        ASSERT_EQ(mkfifo("/etc/cwd/ifcfg-eth0", 0600), 0);
        ASSERT_EQ(chdir("/etc/cwd"), 0);
        EXPECT_EQ(found("eth9"), kScripts + "ifcfg-wan");
    });
}

TEST(FindSysconfig, OnSuseGoesByTheHardwareAddress) {
    private_host::run([] {
        libtarnnet_state.suse = 1;
        const std::string by_mac = std::string("ifcfg-") + kMac;
        EXPECT_EQ(found("eth0"), "none");
        write_file(kNetwork + by_mac, "");
        EXPECT_EQ(found("eth0"), kNetwork + by_mac);
        EXPECT_EQ(found("eth0", kMac, IFT_VLAN), "none");
        EXPECT_EQ(found("eth0", nullptr), "none");
        write_file(kNetwork + "ifcfg-wlan-id-" + kMac, "");
        write_file(kNetwork + "ifcfg-eth-id-" + kMac, "");
        EXPECT_EQ(found("eth0"), kNetwork + "ifcfg-eth-id-" + kMac);
        EXPECT_EQ(found("en0"), "none");
    });
}

}  // namespace
