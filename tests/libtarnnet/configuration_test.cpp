// The library's configuration file with the lists and records that it fills, and the
// distribution's interface files.
#include "netinfo/conf_file.h"

#include <sys/stat.h>
#include <utime.h>

#include "conf_lists.h"
#include "made_up_host.h"
#include "netinfo/single_conf.h"
#include "sysconfig.h"
#include "vlan_naming.h"

namespace {

using ConfFile = MadeUpHost;

TEST_F(ConfFile, FillsTheListsAndTheRecords) {
    const std::string whole_buffer = "ADDR_eth5=\"" + std::string(244, ' ');
    write(state.host.configuration,
          "IFLST_br0=\"early\"\n"
          "VNID_br0=\"old\"\nVNID_br0=\"net0\"\nIFLST_br0=\"  eth0 eth1 \"\n"
          "VLAN_eth1=\"10 10  20\"\nVLAN_eth2=\"10\" # \"20\"\nVLAN_eth1=\"20 4094\"\n"
          "ADDR_eth2=\"\"\n"
          // None of these is a line of addresses.
          "ADDR_eth0=10.0.0.9\nADDR_eth0= \"x\"\nADDR_eth0=\"\nADDR_eth0\nADDR_a=b=\"c\"\n"
          " ADDR_eth0=\"x\"\naddr_eth0=\"x\"\nADDR_\n" +
              whole_buffer + "ADDR_eth6=\"10.0.0.6\"\nADDR_eth1=\"fd00::1 fd00::2\"");
    EXPECT_EQ(read_tarnnetconf(0), 0);
    network* net = find_network_by_br("br0");
    EXPECT_STREQ(net->network_id.get(), "net0") << "the newest one of a bridge";
    EXPECT_STREQ(net->master, "eth0") << "no line before the network's own counts";
    EXPECT_STREQ((*net->slaves.begin()).name, "eth1");
    Lines vlans;
    for (vlan_set& set : configured.vlans)
        for (vlan_entry& vlan : set.vlans)
            vlans.push_back(vlan.name);
    EXPECT_EQ(vlans, (Lines{"eth2.10", "eth1.4094", "eth1.20", "eth1.10"})) << "newest first";
    tarnnet_info* records = get_cached_info(nullptr);
    EXPECT_EQ(lines_of(records),
              (Lines{"eth1 1 [] [fd00::1,fd00::2]", "eth6 1 [] [10.0.0.6]", "eth2 1 [] []"}));
    tarnnet_release_info_SL(records);
}

TEST_F(ConfFile, MissingUnreadableAndUnchangedFiles) {
    const char* path = state.host.configuration;
    EXPECT_EQ(read_tarnnetconf(0), 0) << "missing";
    write(path, "VNID_br0=\"n\"\nADDR_eth0=\"x\"\n");
    const utimbuf unchanged = {0, 0};  // the time that the library remembers from the start
    ASSERT_EQ(utime(path, &unchanged), 0);
    EXPECT_EQ(read_tarnnetconf(0), 0);
    EXPECT_EQ(find_network_by_br("br0"), nullptr);
    EXPECT_EQ(read_tarnnetconf(1), 0);
    EXPECT_NE(find_network_by_br("br0"), nullptr);
    update_tarnnetif_info("eth0", 0, IFU_NETWORK_ID, text_value("n"));
    update_tarnnetif_info("eth0", 0, IFU_BRIDGE, text_value("br0"));
    read_single_conf(0, 0);
    EXPECT_EQ(line_of(*netinfo.active), "eth0 1 [] [x]") << "of the last read";
    ASSERT_EQ(unlink(path), 0);
    ASSERT_EQ(mkfifo(path, 0600), 0);
    EXPECT_EQ(read_tarnnetconf(0), 1) << "no file";
    EXPECT_EQ(find_network_by_br("br0"), nullptr) << "every read starts anew";
    EXPECT_FALSE(configured.iface_addrs.begin() != configured.iface_addrs.end());
}

TEST(VlanNaming, FollowsTheKernelsWord) {
    const std::tuple<const char*, const char*, uint32_t, const char*> cases[] = {
        {"VLAN_NAME_TYPE_PLUS_VID", "eth0", 5, "vlan0005"},
        {"VLAN_NAME_TYPE_RAW_PLUS_VID", "eth0", 5, "eth0.0005"},
        {"VLAN_NAME_TYPE_PLUS_VID_NO_PAD", "eth0", 5, "vlan5"},
        {"VLAN_NAME_TYPE_PLUS_VIDX", "abcdefghijkl", 4094, "abcdefghijkl.40"},
    };
    for (const auto& [word, device, id, expected] : cases) {
        char name[if_name_size];
        vlan_device_name(name, style_of_word(word), device, id);
        EXPECT_STREQ(name, expected);
    }
}

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

TEST_F(FindSysconfig, TakesTheFileOfThatNameOrOneThatNamesTheDevice) {
    EXPECT_EQ(found("eth0"), "none");
    write(network_ + "eth0", "");
    EXPECT_EQ(found("eth0"), network_ + "eth0");
    write(scripts_ + "eth0", "");
    EXPECT_EQ(found("eth0"), scripts_ + "eth0");

    write(scripts_ + "wan",
          "DEVICE=\nDEVICE=eth51\nDEVICE=\"eth5\"\n DEVICE=eth5\nDEVICE=eth3\r\nDEVICE=eth1\n");
    write(std::string(state.host.scripts_dir) + "/wan", "DEVICE=eth4\n");
    EXPECT_EQ(found("eth1"), "none") << "the files are sought in the working directory";
    std::filesystem::current_path(state.host.scripts_dir);
    EXPECT_EQ(found("eth1"), scripts_ + "wan");
    EXPECT_EQ(found("eth3"), scripts_ + "wan");
    EXPECT_EQ(found("eth4"), "none") << "of another name";
    EXPECT_EQ(found("eth5"), "none") << "other names begin alike, or it stands elsewhere";
    // Files of the same names elsewhere are what is read, whatever they are and however long.
    write("elsewhere/ifcfg-wan", std::string(9000, '#') + "\nDEVICE=eth8 \nDEVICE=eth9");
    std::filesystem::current_path("elsewhere");
    ASSERT_EQ(mkfifo("ifcfg-eth0", 0600), 0);
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
    write(network_ + "eth-id-" + mac_text, "");
    EXPECT_EQ(found("eth0"), network_ + "eth-id-" + mac_text);
}

}  // namespace
