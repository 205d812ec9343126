// The record operations: updates, the copy made of a held record, lists, generations, indexes.
#include "netinfo/records.h"

#include <cstdint>

#include "inventory_host.h"
#include "netinfo/index.h"

namespace {

using inventory_host::line_of;
using Names = std::vector<std::string>;

// The names of what matches, in the order of the result.
Names names(const tarnnet_filter* filter = nullptr) {
    tarnnet_info* result = get_cached_info(filter);
    Names found;
    for (tarnnetif_info** record = result->records; *record != nullptr; ++record)
        found.emplace_back((*record)->name);
    tarnnet_release_info_SL(result);
    return found;
}

// Nobody's record is left over from the test before.
class Records : public testing::Test {
protected:
    Records() {
        purge_all_generations();
        use_origin(0, ORIGIN_LIVE);
    }
    ~Records() override {
        tarnnet_release_info_SL(held_);
        purge_all_generations();
        EXPECT_EQ(netinfo.trash, nullptr);
    }

    // Every active record is held from here on.
    void hold() { held_ = get_cached_info(nullptr); }
    void release() {
        tarnnet_release_info_SL(held_);
        held_ = nullptr;
    }

    static tarnnetif_info* set(const char* name, uint32_t code, uint32_t number) {
        return update_tarnnetif_info(name, 0, code, number_value(number));
    }
    static tarnnetif_info* set(const char* name, uint32_t code, const char* text) {
        return update_tarnnetif_info(name, 0, code, text_value(text));
    }

private:
    tarnnet_info* held_ = nullptr;
};

TEST_F(Records, AreMadeGenericAndBareByTheReadInProgress) {
    use_origin(7, ORIGIN_CONF);
    const tarnnetif_info* record = update_tarnnetif_info("eth0", 7, 0, number_value(0));
    EXPECT_EQ(record->set_mask, 6u);
    EXPECT_EQ(record->type, 1u);
    EXPECT_EQ(record->veid, 7u);
    EXPECT_STREQ(record->name, "eth0");
    EXPECT_EQ(record->origin_name, record->name);
    EXPECT_EQ(record->generation, netinfo.next_generation);
    EXPECT_EQ(record->origin.veid, 7u);
    EXPECT_EQ(record->origin.source, 1u);
    EXPECT_EQ(record->refcount, 0);
    EXPECT_EQ(record->addresses, nullptr);
    EXPECT_EQ(netinfo.last_ib, record);
    EXPECT_EQ(find_tarnnetif_info("eth0", 7, IFT_GENERIC), record);
    EXPECT_EQ(find_tarnnetif_info("eth0", 8, IFT_GENERIC), nullptr);
    EXPECT_EQ(find_tarnnetif_info("eth0", 7, IFT_ETHERNET), nullptr);
    EXPECT_NE(set("eth0", IFU_STATE, 1), record) << "the host has one of its own";
}

TEST_F(Records, ChangeInPlaceWhileNobodyHoldsThem) {
    tarnnetif_info* record = set("eth0", IFU_TYPE, IFT_ETHERNET);
    EXPECT_EQ(update_last_tarnnetif_info(IFU_LINK_FLAGS, number_value(5)), record);
    EXPECT_EQ(update_tarnnetif_info_by_ptr(record, IFU_ORIGIN_NAME, text_value("old0")), record);
    EXPECT_EQ(record->set_mask, 6u | 1u | 8u | 0x10000u);
    EXPECT_EQ(record->link_flags, 5u);
    EXPECT_STREQ(record->origin_name, "old0");
}

// What a holder sees must not change under it.
TEST_F(Records, AreReplacedAtTheHeadWhenHeldAndDifferent) {
    tarnnetif_info* old = set("eth0", IFU_HWADDR, "00:01");
    set("eth0", IFU_ADDRESSES, "10.0.0.1/24 10.0.0.2/24");
    set("eth0", IFU_CONF_ADDRESSES, "10.9.0.1");
    set("eth0", IFU_NETWORK_ID, "net1");
    set("eth1", IFU_STATE, 1);
    hold();
    use_origin(0, ORIGIN_LIVE);
    tarnnetif_info* fresh = set("eth0", IFU_HWADDR, "00:02");
    ASSERT_NE(fresh, old);
    EXPECT_EQ(netinfo.active, fresh);
    EXPECT_EQ(fresh->refcount, 0);
    EXPECT_EQ(fresh->set_mask, old->set_mask);
    EXPECT_EQ(fresh->origin_name, fresh->name);
    EXPECT_EQ(line_of(*fresh), "eth0 1 [10.0.0.1/24,10.0.0.2/24] [10.9.0.1] network=net1");
    EXPECT_EQ(fresh->addr_generation, old->addr_generation);
    EXPECT_EQ(fresh->conf_addr_generation, old->conf_addr_generation);
    EXPECT_EQ(find_tarnnetif_info("eth0", 0, IFT_GENERIC), fresh);
    EXPECT_EQ(network_index_find("net1", "eth0", 0, IFT_GENERIC), fresh);

    EXPECT_EQ(netinfo.trash, old);
    EXPECT_EQ(old->generation, -1);
    EXPECT_STREQ(old->hwaddr, "00:01");
    // A holder that goes on with what it holds reaches the replacement.
    EXPECT_EQ(update_tarnnetif_info_by_ptr(old, IFU_STATE, number_value(2)), fresh);
    release();
    EXPECT_EQ(netinfo.trash, nullptr);
}

TEST_F(Records, StayWhenHeldAndTheValueIsTheSame) {
    tarnnetif_info* record = set("eth0", IFU_HWADDR, "00:01");
    set("eth0", IFU_STATE, 1);
    hold();
    use_origin(0, ORIGIN_LIVE);
    EXPECT_EQ(set("eth0", IFU_HWADDR, "00:01"), record);
    EXPECT_EQ(set("eth0", IFU_STATE, 1), record);
    EXPECT_EQ(set("eth0", 0, nullptr), record);
    EXPECT_EQ(set("eth0", IFU_BRIDGE, nullptr), record);
    EXPECT_EQ(set("eth0", IFU_NETWORK_ID, nullptr), record);
    EXPECT_EQ(record->generation, netinfo.next_generation);
    EXPECT_EQ(record->set_mask, 6u | 16u | 512u);
    EXPECT_NE(set("eth0", IFU_CONF_ADDRESSES, ""), record) << "a list always changes";
    record = set("eth1", IFU_STATE, 1);
    release();
    hold();
    EXPECT_NE(set("eth1", IFU_HWADDR, nullptr), record) << "so does what is absent";
}

TEST_F(Records, StartAnewWhenTheyStopBeingABridgeVlanOrPairDevice) {
    for (const uint32_t kind : {IFT_BRIDGE, IFT_VLAN, IFT_VETH}) {
        set("dev0", IFU_TYPE, kind);
        set("other", IFU_STATE, 1);
        set("dev0", IFU_TYPE, kind);
        EXPECT_EQ(names(), (Names{"other", "dev0"})) << kind;
        const tarnnetif_info* record = set("dev0", IFU_TYPE, IFT_ETHERNET);
        EXPECT_EQ(names(), (Names{"dev0", "other"})) << kind;
        EXPECT_EQ(find_tarnnetif_info("dev0", 0, kind), nullptr) << kind;
        EXPECT_EQ(find_tarnnetif_info("dev0", 0, IFT_ETHERNET), record) << kind;
        purge_all_generations();
    }
}

TEST_F(Records, KeepTheDataOfTheirKindOnly) {
    set("veth0", IFU_TYPE, IFT_VETH);
    update_last_tarnnetif_info(IFU_PEER_VEID, number_value(101));
    tarnnetif_info* pair = update_last_tarnnetif_info(IFU_PEER_NAME, text_value("eth0"));
    EXPECT_EQ(update_tarnnetif_info_by_ptr(pair, IFU_VLAN_MASTER, text_value("x")), nullptr);
    hold();
    const tarnnetif_info* copy = set("veth0", IFU_PEER_VEID_2, 102);
    EXPECT_NE(copy, pair);
    EXPECT_EQ(line_of(*copy), "veth0 16 [] [] peer=102:eth0");
    EXPECT_EQ(line_of(*pair), "veth0 16 [] [] peer=101:eth0");
    EXPECT_EQ(line_of(*set("veth0", IFU_TYPE, IFT_VLAN)), "veth0 8 [] [] vlan=0");
    update_last_tarnnetif_info(IFU_VLAN_ID, number_value(10));
    EXPECT_EQ(line_of(*update_last_tarnnetif_info(IFU_VLAN_MASTER, text_value("eth1"))),
              "veth0 8 [] [] vlan=10 master=eth1");
}

TEST_F(Records, MoveInTheNetworkIndexWithTheirNetworkAndKind) {
    tarnnetif_info* record = set("eth0", IFU_NETWORK_ID, "net1");
    set("eth1", IFU_NETWORK_ID, "net1");
    set("eth0", IFU_TYPE, IFT_ETHERNET);
    EXPECT_EQ(network_index_find("net1", "eth0", 0, IFT_ETHERNET), record);
    EXPECT_EQ(network_index_find("net1", "eth0", 0, IFT_GENERIC), nullptr);
    set("eth0", IFU_NETWORK_ID, record->network_id);
    set("eth0", IFU_NETWORK_ID, "net2");
    EXPECT_EQ(network_index_find("net1", "eth0", 0, IFT_ETHERNET), nullptr);
    EXPECT_EQ(network_index_find("net2", "eth0", 0, IFT_ETHERNET), record);
    set("eth0", IFU_NETWORK_ID, nullptr);
    EXPECT_EQ(network_index_find("net2", "eth0", 0, IFT_ETHERNET), nullptr);
    EXPECT_EQ(record->network_id, nullptr);
    EXPECT_NE(network_index_find("net1", "eth1", 0, IFT_GENERIC), nullptr);
}

TEST_F(Records, ListsGrowWithinAGenerationAndStartAnewInTheNext) {
    set("eth0", IFU_ADDRESSES, "10.0.0.1/24");
    const tarnnetif_info* record = set("eth0", IFU_ADDRESSES, "  10.0.0.2/24   10.0.0.3/24 ");
    set("eth0", IFU_CONF_ADDRESSES, "10.9.0.1");
    EXPECT_EQ(line_of(*record), "eth0 1 [10.0.0.1/24,10.0.0.2/24,10.0.0.3/24] [10.9.0.1]");
    use_origin(0, ORIGIN_LIVE);
    set("eth0", IFU_ADDRESSES, "10.0.0.4/24");
    EXPECT_EQ(line_of(*record), "eth0 1 [10.0.0.4/24] [10.9.0.1]");
    netinfo.next_generation = INT32_MAX;
    use_origin(0, ORIGIN_LIVE);
    EXPECT_EQ(netinfo.next_generation, 0);
    set("eth0", IFU_ADDRESSES, "");
    EXPECT_EQ(line_of(*record), "eth0 1 [] [10.9.0.1]");
}

TEST_F(Records, OfTheOriginAreDroppedUnlessTheReadTouchedThem) {
    use_origin(0, ORIGIN_CONF);
    set("configured", IFU_STATE, 1);
    use_origin(0, ORIGIN_LIVE);
    set("gone", IFU_STATE, 1);
    set("stays", IFU_STATE, 1);
    use_origin(0, ORIGIN_LIVE);
    set("stays", IFU_STATE, 1);
    set("configured", IFU_STATE, 2);
    set("fresh", IFU_STATE, 1);
    purge_old_generations();
    hold();
    EXPECT_EQ(find_tarnnetif_info("gone", 0, IFT_GENERIC), nullptr);
    EXPECT_EQ(names(), (Names{"fresh", "stays", "configured"}));
    purge_all_generations();
    EXPECT_EQ(netinfo.active, nullptr);
    EXPECT_EQ(find_tarnnetif_info("stays", 0, IFT_GENERIC), nullptr);
    EXPECT_NE(netinfo.trash, nullptr);
}

TEST_F(Records, HaveAFixedNameAndContainer) {
    set("eth0", IFU_STATE, 1);
    EXPECT_DEATH(set("eth0", IFU_NAME, "eth1"), "fixed");
    EXPECT_DEATH(update_last_tarnnetif_info(IFU_VEID, number_value(1)), "fixed");
    purge_all_generations();
    EXPECT_DEATH(update_last_tarnnetif_info(IFU_STATE, number_value(1)), "touched last");
}

TEST_F(Records, AreFilteredByKindContainerAndTexts) {
    set("eth0", IFU_TYPE, IFT_ETHERNET);
    set("eth1", IFU_BRIDGE, "br0");
    set("eth1", IFU_NETWORK_ID, "net1");
    update_tarnnetif_info("eth2", 5, IFU_BRIDGE, text_value("br0"));
    const struct {
        uint32_t kinds;
        const char* bridge;
        const char* network;
        const char* name;
        uint32_t min;
        uint32_t max;
        Names expected;
    } cases[] = {
        {IFT_ALL, nullptr, nullptr, nullptr, 0, UINT32_MAX, {"eth2", "eth1", "eth0"}},
        {IFT_ETHERNET | IFT_VETH, nullptr, nullptr, nullptr, 0, 9, {"eth0"}},
        {IFT_ALL, "br0", "net1", nullptr, 0, 5, {"eth1"}},
        {IFT_ALL, "br", nullptr, nullptr, 0, 5, {}},
        {IFT_ALL, nullptr, nullptr, "eth0", 0, 0, {"eth0"}},
        {IFT_ALL, nullptr, nullptr, nullptr, 1, 4, {}},
        {IFT_ALL, nullptr, nullptr, nullptr, 5, 5, {"eth2"}},
    };
    for (const auto& c : cases) {
        tarnnet_filter* filter =
            tarnnet_get_simple_filter(c.kinds, c.bridge, c.network, c.name, c.min, c.max);
        EXPECT_EQ(names(filter), c.expected) << &c - cases;
        tarnnet_release_filter(filter);
    }
}

TEST_F(Records, AreReturnedHoweverManyThereAre) {
    for (const int count : {14, 15, 16, 17, 33, 300}) {
        purge_all_generations();
        Names expected;
        for (int i = 0; i < count; ++i) {
            expected.insert(expected.begin(), "eth" + std::to_string(i));
            set(expected.front().c_str(), IFU_STATE, 1);
        }
        EXPECT_EQ(names(), expected) << count;
    }
}

}  // namespace
