// The library's configuration file and the lists that it fills.
#include "conf_file.h"

#include <gtest/gtest.h>
#include <utime.h>

#include <string>
#include <vector>

#include "conf_lists.h"
#include "netinfo/records.h"
#include "own_mounts.h"
#include "vlan_naming.h"

namespace {

using Texts = std::vector<std::string>;
constexpr const char* kConf = "/etc/tarn/tarnnet.conf";

// The entries of a list from its tail, where the oldest one is.
template <class Entry, class Text>
Texts oldest_first(list_node* head, Text text) {
    Texts all;
    for (list_node* node = head->prev; node != head; node = node->prev) {
        all.push_back(text(list_entry<Entry>(node)));
    }
    return all;
}

template <class Entry, class Text>
Texts entries_of(list_node* sets, const std::string& ifname, Text text) {
    auto* set =
        list_find<iface_set>(sets, [&](const iface_set* each) { return each->ifname == ifname; });
    return set == nullptr ? Texts{"no set"} : oldest_first<Entry>(&set->entries, text);
}

Texts vlans_of(const std::string& device) {
    return entries_of<vlan_entry>(vlan_list(), device, [](const vlan_entry* vlan) {
        return std::to_string(vlan->vlan_id) + " " + vlan->name;
    });
}

Texts addresses_of(const std::string& ifname) {
    return entries_of<iface_addr>(iface_addr_list(), ifname,
                                  [](const iface_addr* addr) { return addr->text; });
}

Texts slaves_of(network* net) {
    return oldest_first<slave_iface>(&net->slaves, [](const slave_iface* s) { return s->name; });
}

// The configured addresses of a generic record of the host.
Texts recorded(const char* ifname) {
    const tarnnetif_info* record = find_tarnnetif_info(ifname, 0, IFT_GENERIC);
    if (record == nullptr) {
        return {"no record"};
    }
    Texts all;
    for (char** text = record->conf_addresses; text != nullptr && *text != nullptr; ++text) {
        all.emplace_back(*text);
    }
    return all;
}

void flush_all() {
    flush_networks();
    flush_vlans();
    flush_veths();
    flush_iface_addrs();
    purge_all_generations();
}

// Reads `text` as the configuration file in mounts of its own, then looks at what came of it.
template <class Checks>
void with_conf(const std::string& text, Checks checks) {
    own_mounts::run([&] {
        own_mounts::write_file(kConf, text);
        use_origin(0, ORIGIN_CONF);
        EXPECT_EQ(read_tarnnetconf(0), 0);
        checks();
        flush_all();
    });
}

TEST(ConfLine, IsTakenByItsPrefixWithAQuotedValue) {
    struct Case {
        const char* line;
        conf_key key;
        const char* name;
        const char* value;
    } const cases[] = {
        {"VNID_br0=\"net1\"\n", CONF_NETWORK, "br0", "net1"},
        {"IFLST_br0=\" eth0  eth1 \"", CONF_INTERFACES, "br0", " eth0  eth1 "},
        {"VLAN_eth1=\"10\" # \"20\"\n", CONF_VLANS, "eth1", "10"},
        {"ADDR_a=b=\"c\"", CONF_NONE, "", ""},
        {"ADDR_eth0=\"\"", CONF_ADDRESSES, "eth0", ""},
        {"ADDR_eth0=10.0.0.1\n", CONF_NONE, "", ""},
        {"ADDR_eth0= \"10.0.0.1\"\n", CONF_NONE, "", ""},
        {"ADDR_eth0=\"10.0.0.1\n", CONF_NONE, "", ""},
        {"ADDR_eth0=\"", CONF_NONE, "", ""},
        {"ADDR_eth0", CONF_NONE, "", ""},
        {" ADDR_eth0=\"x\"", CONF_NONE, "", ""},
        {"addr_eth0=\"x\"", CONF_NONE, "", ""},
        {"", CONF_NONE, "", ""},
    };
    for (const Case& c : cases) {
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
            EXPECT_EQ(slaves_of(net), (Texts{"eth1", "an-interface-to"}));
            network* cut = find_network_by_br("abcdefghijklmno");
            ASSERT_NE(cut, nullptr);
            EXPECT_STREQ(cut->master, "") << "the whole name is not the one stored";
        });
}

TEST(ConfFile, VlansAndAddressesAreSetsOfTheirInterface) {
    with_conf(
        "VLAN_eth1=\"10 10  20\"\nVLAN_eth1=\"20 4094\"\n"
        "ADDR_eth0=\"10.0.0.1 10.0.0.2/24 10.0.0.1\"\n"
        "ADDR_eth1=\"2001:db8:1111:2222:3333::1 2001:db8:1111:2222:4444::1\"\n"
        "ADDR_eth2=\"\"\nADDR_eth3=10.0.0.9\n",
        [] {
            EXPECT_EQ(vlans_of("eth1"), (Texts{"10 eth1.10", "20 eth1.20", "4094 eth1.4094"}));
            EXPECT_EQ(addresses_of("eth0"), (Texts{"10.0.0.1", "10.0.0.2/24"}));
            EXPECT_EQ(addresses_of("eth1"), Texts{"2001:db8:1111:2222:"}) << "cut, then compared";
            // The records take every word whole, as often as it comes.
            EXPECT_EQ(recorded("eth0"), (Texts{"10.0.0.1", "10.0.0.2/24", "10.0.0.1"}));
            EXPECT_EQ(recorded("eth1").at(1), "2001:db8:1111:2222:4444::1");
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

TEST(ConfFile, EveryReadStartsFromEmptyLists) {
    with_conf("VNID_br0=\"n\"\nVLAN_eth1=\"1\"\nADDR_eth0=\"10.0.0.1\"\n", [] {
        add_veth("veth1.0", "eth0", 1);
        own_mounts::write_file(kConf, "");
        EXPECT_EQ(read_tarnnetconf(0), 0);
        EXPECT_TRUE(list_empty(network_list()));
        EXPECT_TRUE(list_empty(vlan_list()));
        EXPECT_TRUE(list_empty(iface_addr_list()));
        EXPECT_FALSE(list_empty(veth_list())) << "the pair devices are another reader's";
    });
}

TEST(ConfFile, MissingUnreadableAndUnchangedFiles) {
    own_mounts::run([] {
        EXPECT_EQ(read_tarnnetconf(0), 0) << "missing";
        own_mounts::write_file(kConf, "VNID_br0=\"n\"\n");
        const utimbuf unchanged = {0, 0};  // the time that the library remembers from the start
        ASSERT_EQ(utime(kConf, &unchanged), 0);
        EXPECT_EQ(read_tarnnetconf(0), 0);
        EXPECT_EQ(find_network_by_br("br0"), nullptr);
        EXPECT_EQ(read_tarnnetconf(1), 0);
        EXPECT_NE(find_network_by_br("br0"), nullptr);

        ASSERT_EQ(unlink(kConf), 0);
        ASSERT_EQ(mkdir(kConf, 0755), 0);
        EXPECT_EQ(read_tarnnetconf(1), 0) << "a directory reads as nothing";
        EXPECT_EQ(find_network_by_br("br0"), nullptr);
        ASSERT_EQ(rmdir(kConf), 0);
        ASSERT_EQ(symlink("tarnnet.conf", kConf), 0);
        EXPECT_EQ(read_tarnnetconf(0), 1) << "a status other than missing";
    });
}

TEST(VlanNaming, FollowsTheKernelsWord) {
    struct Case {
        const char* word;
        const char* name;
    } const cases[] = {
        {"VLAN_NAME_TYPE_PLUS_VID", "vlan0005"},
        {"VLAN_NAME_TYPE_RAW_PLUS_VID", "enp0s31f6.0005"},
        {"VLAN_NAME_TYPE_PLUS_VID_NO_PAD", "vlan5"},
        {nullptr, "vlan5"},
        {"VLAN_NAME_TYPE_RAW_PLUS_VID_NO_PAD", "enp0s31f6.5"},
        {"VLAN_NAME_TYPE_PLUS_VIDX", "enp0s31f6.5"},
    };
    char name[kIfNameSize];
    for (const Case& c : cases) {
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
