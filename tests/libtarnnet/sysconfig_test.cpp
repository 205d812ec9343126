// The distribution's interface files: finding them in every way, and what they mark.
#include "sysconfig.h"

#include <sys/stat.h>

#include "inventory_host.h"
#include "state.h"

namespace {

const std::string scripts_dir = "/etc/sysconfig/network-scripts/";
const std::string network_dir = "/etc/sysconfig/network/";
constexpr const char* mac_text = "00:11:22:33:44:55";

using private_host::write_file;

std::string found(const char* name, const char* hwaddr = mac_text, uint32_t kind = IFT_ETHERNET) {
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
        write_file(network_dir + "ifcfg-eth0", "");
        EXPECT_EQ(found("eth0"), network_dir + "ifcfg-eth0");
        write_file(scripts_dir + "ifcfg-eth0", "");
        EXPECT_EQ(found("eth0"), scripts_dir + "ifcfg-eth0");
        ASSERT_EQ(symlink("nowhere", (scripts_dir + "ifcfg-eth2").c_str()), 0);
        EXPECT_EQ(found("eth2"), "none") << "a dangling link is no file";

        write_file(scripts_dir + "ifcfg-wan", "DEVICE=eth1\n");
        EXPECT_EQ(found("eth1"), "none") << "the files are sought in the working directory";
        ASSERT_EQ(chdir(scripts_dir.c_str()), 0);
        EXPECT_EQ(found("eth1"), scripts_dir + "ifcfg-wan");
        // Files of the same names elsewhere are what is read, whatever they are.
        write_file("/etc/cwd/ifcfg-wan", "# wan\nDEVICE=eth8 \nDEVICE=eth9");
        ASSERT_EQ(mkfifo("/etc/cwd/ifcfg-eth0", 0600), 0);
        ASSERT_EQ(chdir("/etc/cwd"), 0);
        EXPECT_EQ(found("eth9"), scripts_dir + "ifcfg-wan");
    });
}

TEST(FindSysconfig, OnSuseGoesByTheHardwareAddress) {
    private_host::run([] {
        libtarnnet_state.suse = 1;
        const std::string by_mac = std::string("ifcfg-") + mac_text;
        EXPECT_EQ(found("eth0"), "none");
        write_file(network_dir + by_mac, "");
        EXPECT_EQ(found("eth0"), network_dir + by_mac);
        EXPECT_EQ(found("eth0", mac_text, IFT_VLAN), "none");
        EXPECT_EQ(found("eth0", nullptr), "none");
        write_file(network_dir + "ifcfg-wlan-id-" + mac_text, "");
        write_file(network_dir + "ifcfg-eth-id-" + mac_text, "");
        EXPECT_EQ(found("eth0"), network_dir + "ifcfg-eth-id-" + mac_text);
        EXPECT_EQ(found("en0"), "none");
    });
}

}  // namespace
