// The library's configuration file and the lists that it fills.
#include "conf_file.h"

#include <sys/stat.h>
#include <utime.h>

#include "conf_lists.h"
#include "inventory_host.h"
#include "netinfo/records.h"

namespace {

using Texts = std::vector<std::string>;
constexpr const char* kConf = "/etc/tarn/tarnnet.conf";

// The entries of a list from its tail, where the oldest one is.
template <class Entry, class Text>
Texts oldest_first(list_node* head, Text text) {
    Texts all;
    for (list_node* node = head->prev; node != head; node = node->prev)
        all.push_back(text(list_entry<Entry>(node)));
    return all;
}

// The entries of the one set that there is.
Texts vlans() {
    return oldest_first<vlan_entry>(
        &list_entry<iface_set>(vlan_list()->next)->entries,
        [](const vlan_entry* vlan) { return std::to_string(vlan->vlan_id) + " " + vlan->name; });
}

// The configured addresses of a generic record of the host.
Texts recorded(const char* ifname) {
    const tarnnetif_info* record = find_tarnnetif_info(ifname, 0, IFT_GENERIC);
    return record == nullptr ? Texts{"no record"} : inventory_host::texts(record->conf_addresses);
}

// Reads `text` as the configuration file of a host of its own, then looks at what came of it.
template <class Checks>
void with_conf(const std::string& text, Checks checks) {
    private_host::run([&] {
        private_host::write_file(kConf, text);
        use_origin(0, ORIGIN_CONF);
        EXPECT_EQ(read_tarnnetconf(0), 0);
        checks();
    });
}

TEST(ConfLine, IsTakenByItsPrefixWithAQuotedValue) {
    const struct {
        const char* line;
        conf_key key;
        const char* name;
        const char* value;
    } cases[] = {
        {"VNID_br0=\"net1\"\n", CONF_NETWORK, "br0", "net1"},
        {"IFLST_br0=\" eth0  eth1 \"", CONF_INTERFACES, "br0", " eth0  eth1 "},
        {"VLAN_eth1=\"10\" # \"20\"\n", CONF_VLANS, "eth1", "10"},
        {"ADDR_eth0=\"\"", CONF_ADDRESSES, "eth0", ""},
        {"ADDR_a=b=\"c\"", CONF_NONE, "", ""},
        {"ADDR_eth0=10.0.0.1\n", CONF_NONE, "", ""},
        {"ADDR_eth0= \"10.0.0.1\"\n", CONF_NONE, "", ""},
        {"ADDR_eth0=\"", CONF_NONE, "", ""},
        {"ADDR_eth0", CONF_NONE, "", ""},
        {" ADDR_eth0=\"x\"", CONF_NONE, "", ""},
        {"addr_eth0=\"x\"", CONF_NONE, "", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.line);
        std::string line = c.line;
        const conf_line parsed = parse_conf_line(line.data());
        EXPECT_EQ(parsed.key, c.key);
        EXPECT_STREQ(parsed.key == CONF_NONE ? "" : parsed.name, c.name);
        EXPECT_STREQ(parsed.key == CONF_NONE ? "" : parsed.value, c.value);
    }
}

TEST(ConfFile, InterfacesJoinTheNetworkThatAnEarlierLineMade) {
    with_conf(
        "IFLST_br0=\"early\"\n"
        "VNID_br0=\"old\"\nVNID_br0=\"net0\"\nVNID_abcdefghijklmnopqr=\"cut\"\n"
        "IFLST_br0=\"  eth0 eth1  an-interface-too-long \"\n"
        "IFLST_abcdefghijklmnopqr=\"eth5\"\nIFLST_br1=\"eth6\"\n",
        [] {
            network* net = find_network_by_br("br0");
            ASSERT_NE(net, nullptr);
            EXPECT_STREQ(net->network_id, "net0") << "the newest one of a bridge";
            EXPECT_STREQ(net->master, "eth0");
            EXPECT_EQ(oldest_first<slave_iface>(&net->slaves,
                                                [](const slave_iface* s) { return s->name; }),
                      (Texts{"eth1", "an-interface-to"}));
            network* cut = find_network_by_br("abcdefghijklmno");
            ASSERT_NE(cut, nullptr);
            EXPECT_STREQ(cut->master, "") << "the whole name is not the one stored";
        });
}

TEST(ConfFile, VlansAndAddressesAreSetsOfTheirInterface) {
    with_conf(
        "VLAN_eth1=\"10 10  20\"\nVLAN_eth1=\"20 4094\"\n"
        "ADDR_eth1=\"2001:db8:1111:2222:3333::1 2001:db8:1111:2222:4444::1\"\n"
        "ADDR_eth2=\"\"\nADDR_eth3=10.0.0.9\n",
        [] {
            EXPECT_EQ(vlans(), (Texts{"10 eth1.10", "20 eth1.20", "4094 eth1.4094"}));
            list_node* sets = iface_addr_list();
            EXPECT_EQ(oldest_first<iface_addr>(&list_entry<iface_set>(sets->prev)->entries,
                                               [](const iface_addr* addr) { return addr->text; }),
                      Texts{"2001:db8:1111:2222:"})
                << "cut, then compared";
            // The records take every word whole.
            EXPECT_EQ(recorded("eth1"),
                      (Texts{"2001:db8:1111:2222:3333::1", "2001:db8:1111:2222:4444::1"}));
            EXPECT_EQ(recorded("eth2"), Texts{});
            EXPECT_EQ(recorded("eth3"), Texts{"no record"});
        });
}

TEST(ConfFile, ALineLongerThanTheBufferContinuesAsTheNextOne) {
    // 255 characters are one line; what follows them starts another.
    const std::string open_quote = "ADDR_eth0=\"" + std::string(244, ' ');
    with_conf(open_quote + "ADDR_eth1=\"10.0.0.1\"\n" + std::string("ADDR_eth2=\"a\0b\"\n", 16) +
                  "\n" + std::string(1000, 'x') + "\nADDR_eth4=\"10.0.0.4\"",
              [] {
                  EXPECT_EQ(recorded("eth0"), Texts{"no record"});
                  EXPECT_EQ(recorded("eth1"), Texts{"10.0.0.1"});
                  EXPECT_EQ(recorded("eth2"), Texts{"no record"}) << "a NUL ends the line's text";
                  EXPECT_EQ(recorded("eth4"), Texts{"10.0.0.4"}) << "no final newline";
              });
}

TEST(ConfFile, MissingUnreadableAndUnchangedFiles) {
    private_host::run([] {
        add_veth("veth1.0", "eth0", 1);
        EXPECT_EQ(read_tarnnetconf(0), 0) << "missing";
        private_host::write_file(kConf, "VNID_br0=\"n\"\nVLAN_eth1=\"1\"\nADDR_eth0=\"x\"\n");
        const utimbuf unchanged = {0, 0};  // the time that the library remembers from the start
        ASSERT_EQ(utime(kConf, &unchanged), 0);
        EXPECT_EQ(read_tarnnetconf(0), 0);
        EXPECT_EQ(find_network_by_br("br0"), nullptr);
        EXPECT_EQ(read_tarnnetconf(1), 0);
        EXPECT_NE(find_network_by_br("br0"), nullptr);

        ASSERT_EQ(unlink(kConf), 0);
        ASSERT_EQ(mkdir(kConf, 0755), 0);
        EXPECT_EQ(read_tarnnetconf(1), 0) << "a directory reads as nothing";
        for (list_node* list : {network_list(), vlan_list(), iface_addr_list()})
            EXPECT_TRUE(list_empty(list)) << "every read starts anew";
        EXPECT_FALSE(list_empty(veth_list())) << "the pair devices are another reader's";
        ASSERT_EQ(rmdir(kConf), 0);
        ASSERT_EQ(symlink("tarnnet.conf", kConf), 0);
        EXPECT_EQ(read_tarnnetconf(0), 1) << "a status other than missing";
    });
}

TEST(VlanNaming, FollowsTheKernelsWord) {
    const struct {
        const char* word;
        const char* name;
    } cases[] = {
        {"VLAN_NAME_TYPE_PLUS_VID", "vlan0005"},
        {"VLAN_NAME_TYPE_RAW_PLUS_VID", "enp0s31f6.0005"},
        {"VLAN_NAME_TYPE_PLUS_VID_NO_PAD", "vlan5"},
        {nullptr, "vlan5"},
        {"VLAN_NAME_TYPE_PLUS_VIDX", "enp0s31f6.5"},
    };
    char name[kIfNameSize];
    for (const auto& c : cases) {
        set_vlan_naming(c.word);
        vlan_device_name(name, vlan_naming(), "enp0s31f6", 5);
        EXPECT_STREQ(name, c.name);
    }
    vlan_device_name(name, 17, "eth0", 5);
    EXPECT_STREQ(name, "none.0005");
    vlan_device_name(name, VLAN_RAW_NO_PAD, "abcdefghijklmn", 4094);
    EXPECT_STREQ(name, "abcdefghijklmn.");
}

}  // namespace
