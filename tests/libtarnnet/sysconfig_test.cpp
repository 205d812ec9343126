// The distribution's interface files: finding them in every way, and what they mark.
#include "sysconfig.h"

#include <sys/stat.h>

#include "made_up_host.h"

namespace {

constexpr const char* mac_text = "00:11:22:33:44:55";

class FindSysconfig : public MadeUpHost {
protected:
    static std::string found(const char* name, const char* hwaddr = mac_text,
                             uint32_t kind = IFT_ETHERNET) {
        const owned_text path = find_sysconfig(name, kind, hwaddr);
        return path ? path.get() : "none";
    }

    const std::string scripts_ = std::string(state.host.scripts_dir) + "/ifcfg-";
    const std::string network_ = std::string(state.host.network_dir) + "/ifcfg-";
};

TEST(IfcfgLine, AsksForDhcpAndNamesADevice) {
    EXPECT_TRUE(ifcfg_line_asks_dhcp(" \t\v\fBOOTPROTO=none # not dhcp"));
    EXPECT_FALSE(ifcfg_line_asks_dhcp("#dhcp BOOTPROTO=none"));
    for (const char* line : {"DEVICE=eth0", "DEVICE=eth0\r\n", "DEVICE=eth0 x"})
        EXPECT_TRUE(ifcfg_line_names_device(line, "eth0")) << line;
    for (const char* line : {"DEVICE=eth01", "DEVICE=\"eth0\"", " DEVICE=eth0", "DEVICE="})
        EXPECT_FALSE(ifcfg_line_names_device(line, "eth0")) << line;
}

TEST_F(FindSysconfig, TakesTheFileOfThatNameOrOneThatNamesTheDevice) {
    EXPECT_EQ(found("eth0"), "none");
    write(network_ + "eth0", "");
    EXPECT_EQ(found("eth0"), network_ + "eth0");
    write(scripts_ + "eth0", "");
    EXPECT_EQ(found("eth0"), scripts_ + "eth0");
    ASSERT_EQ(symlink("nowhere", (scripts_ + "eth2").c_str()), 0);
    EXPECT_EQ(found("eth2"), "none") << "a dangling link is no file";

    write(scripts_ + "wan", "DEVICE=eth1\n");
    write(std::string(state.host.scripts_dir) + "/wan", "DEVICE=eth4\n");
    EXPECT_EQ(found("eth1"), "none") << "the files are sought in the working directory";
    std::filesystem::current_path(state.host.scripts_dir);
    EXPECT_EQ(found("eth1"), scripts_ + "wan");
    EXPECT_EQ(found("eth4"), "none") << "of another name";
    // Files of the same names elsewhere are what is read, whatever they are.
    const std::string longest_line(65535, '#');
    write("elsewhere/ifcfg-wan", longest_line + "DEVICE=eth8 \nDEVICE=eth9");
    std::filesystem::current_path("elsewhere");
    ASSERT_EQ(mkfifo("ifcfg-eth0", 0600), 0);
    EXPECT_EQ(found("eth8"), scripts_ + "wan");
    EXPECT_EQ(found("eth9"), scripts_ + "wan");
    std::filesystem::current_path("/");
}

TEST_F(FindSysconfig, OnSuseGoesByTheHardwareAddress) {
    write(state.host.suse_release, "");
    state.init_code = TARNNET_ERR_STATE;
    ASSERT_EQ(init_libtarnnet_state(), 0);
    const std::string by_mac = network_ + mac_text;
    EXPECT_EQ(found("eth0"), "none");
    write(by_mac, "");
    write(std::string(state.host.network_dir) + "/route-" + mac_text, "");
    EXPECT_EQ(found("eth0"), by_mac);
    EXPECT_EQ(found("eth0", mac_text, IFT_VLAN), "none");
    EXPECT_EQ(found("eth0", nullptr), "none");
    write(network_ + "wlan-id-" + mac_text, "");
    for (const char* alike : {"eth-bus-", "eth-id-"})
        write(network_ + alike + mac_text, "");
    EXPECT_EQ(found("eth0"), network_ + "eth-bus-" + mac_text) << "the first one";
    EXPECT_EQ(found("cfg0"), "none") << "sought behind the prefix";
}

}  // namespace
