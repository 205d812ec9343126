// The record operations: updates, the copy made of a held record, lists, generations, indexes.
#include "netinfo/records.h"

#include "made_up_host.h"
#include "netinfo/index.h"

namespace {

// The names of what matches, in the order of the result.
std::string names(const tarnnet_filter& filter = {IFT_ALL, nullptr, nullptr, nullptr, 0, 9}) {
    tarnnet_info* result = get_cached_info(&filter);
    std::string found;
    for (tarnnetif_info** record = result->records; *record != nullptr; ++record)
        found += std::string((*record)->name) + " ";
    tarnnet_release_info_SL(result);
    return found;
}

class Records : public MadeUpHost {
protected:
    Records() { use_origin(0, origin_live); }
    ~Records() override { tarnnet_release_info_SL(held_); }
    static tarnnetif_info* set(const char* name, uint32_t code, uint32_t number) {
        return update_tarnnetif_info(name, 0, code, number_value(number));
    }
    static tarnnetif_info* set(const char* name, uint32_t code, const char* text) {
        return update_tarnnetif_info(name, 0, code, text_value(text));
    }
    // Every active record is held from here on, and a new generation begins.
    void hold() {
        held_ = get_cached_info(nullptr);
        use_origin(0, origin_live);
    }
    tarnnet_info* held_ = nullptr;
};

// What a holder sees must not change under it.
TEST_F(Records, AreReplacedAtTheHeadWhenHeldAndDifferentAndStayWhenTheSame) {
    tarnnetif_info* old = set("eth0", IFU_HWADDR, "00:01");
    set("eth0", IFU_ADDRESSES, "10.0.0.1/24 10.0.0.2/24");
    set("eth0", IFU_NETWORK_ID, "net1");
    const tarnnetif_info* listed = set("eth1", IFU_STATE, 1);
    hold();
    EXPECT_EQ(set("eth0", IFU_HWADDR, "00:01"), old);
    EXPECT_EQ(set("eth0", IFU_STATE, 0u), old);
    EXPECT_EQ(set("eth0", IFU_BRIDGE, nullptr), old);
    EXPECT_NE(set("eth1", IFU_CONF_ADDRESSES, ""), listed) << "a list always changes";
    tarnnetif_info* fresh = set("eth0", IFU_HWADDR, "00:02");
    EXPECT_EQ(fresh->set_mask, old->set_mask);
    EXPECT_EQ(network_index_find("net1", "eth0", 0, IFT_GENERIC), fresh);
    EXPECT_EQ(names(), "eth0 eth1 ");
    EXPECT_EQ(line_of(*fresh), "eth0 1 [10.0.0.1/24,10.0.0.2/24] [] network=net1");
    EXPECT_EQ(line_of(*set("eth0", IFU_ADDRESSES, " 10.9.0.2  10.9.0.3 ")),
              "eth0 1 [10.9.0.2,10.9.0.3] [] network=net1")
        << "a list starts anew in a generation";
    set("eth0", IFU_NETWORK_ID, nullptr);
    EXPECT_EQ(network_index_find("net1", "eth0", 0, IFT_GENERIC), nullptr);
    EXPECT_TRUE(netinfo.trash == old && old->generation == -1);
    EXPECT_STREQ(old->hwaddr, "00:01");
    // A holder that goes on with what it holds reaches the replacement.
    EXPECT_EQ(update_tarnnetif_info_by_ptr(old, IFU_STATE, number_value(2)), fresh);
}

TEST_F(Records, StartAnewWithoutItsDataWhenTheyStopBeingABridgeVlanOrPairDevice) {
    for (const uint32_t kind : {IFT_BRIDGE, IFT_VLAN, IFT_VETH}) {
        set("dev0", IFU_TYPE, kind);
        set("other", IFU_STATE, 1);
        EXPECT_EQ(names(), "other dev0 ") << kind;
        const tarnnetif_info* record = set("dev0", IFU_TYPE, IFT_ETHERNET);
        EXPECT_EQ(names(), "dev0 other ") << kind;
        EXPECT_EQ(find_tarnnetif_info("dev0", 0, IFT_ETHERNET), record) << kind;
        purge_all_generations();
    }
    set("veth0", IFU_TYPE, IFT_VETH);
    set("veth0", IFU_PEER_VEID, 101);
    const tarnnetif_info* pair = set("veth0", IFU_PEER_NAME, "eth0");
    hold();
    EXPECT_EQ(line_of(*set("veth0", IFU_PEER_VEID_2, 102)), "veth0 16 [] [] peer=102:eth0");
    EXPECT_EQ(line_of(*pair), "veth0 16 [] [] peer=101:eth0");
    EXPECT_EQ(line_of(*set("veth0", IFU_TYPE, IFT_VLAN)), "veth0 8 [] [] vlan=0");
}

TEST_F(Records, OfTheOriginAreDroppedUnlessTheReadTouchedThem) {
    use_origin(0, origin_conf);
    set("configured", IFU_STATE, 1);
    use_origin(0, origin_live);
    set("gone", IFU_STATE, 1);
    set("stays", IFU_STATE, 1);
    use_origin(0, origin_live);
    set("stays", IFU_STATE, 1);
    set("fresh", IFU_STATE, 1);
    purge_old_generations();
    EXPECT_EQ(names(), "fresh stays configured ");
}

TEST_F(Records, AreFilteredHoweverManyThereAre) {
    set("eth0", IFU_TYPE, IFT_ETHERNET);
    set("eth1", IFU_BRIDGE, "br0");
    set("eth1", IFU_NETWORK_ID, "net1");
    update_tarnnetif_info("eth2", 5, IFU_BRIDGE, text_value("br0"));
    char br0[] = "br0", net1[] = "net1", eth0[] = "eth0";
    EXPECT_EQ(names({IFT_ETHERNET | IFT_VETH, nullptr, nullptr, nullptr, 0, 9}), "eth0 ");
    EXPECT_EQ(names({IFT_ALL, br0, net1, nullptr, 0, 5}), "eth1 ");
    EXPECT_EQ(names({IFT_ALL, nullptr, nullptr, eth0, 0, 0}), "eth0 ");
    EXPECT_EQ(names({IFT_ALL, nullptr, nullptr, nullptr, 5, 5}), "eth2 ");
    std::string expected = names();
    for (char name[] = "more0"; name[4] < '0' + 40; ++name[4]) {
        set(name, IFU_STATE, 1);
        EXPECT_EQ(names(), expected.insert(0, std::string(name) + " "));
    }
}

}  // namespace
