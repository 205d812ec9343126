// The whole inventory, against the kernel and against made-up files.
#include <pthread.h>
#include <sched.h>

#include "conf_lists.h"
#include "made_up_host.h"
#include "netinfo/kind_parsers.h"

namespace {

TEST_F(MadeUpHost, IsClassifiedByItsFiles) {
    fill();
    const std::string eth0 = "eth0 2 [10.1.0.1/24,fd00::1/64] [dhcp]";
    const std::string far0 = "far0 1 [] [10.9.0.1,10.9.0.2]";
    const Lines all = {eth0,
                       "br1 4 [] []",
                       ".. 1 [] [] bridge=br0 network=net1",
                       ". 1 [] [] bridge=br0 network=net1",
                       "br0 4 [] [] network=net1",
                       "eth0.10 8 [] [] vlan=10 master=eth0",
                       "vme2 16 [] []",
                       "veth102.0 16 [] [] peer=102:eth1",
                       "veth101.0 16 [] [] bridge=br0 network=net1 peer=101:eth0",
                       "vme1 16 [] []",
                       far0};
    tarnnet_filter host = {IFT_ALL, nullptr, nullptr, nullptr, 0, 0};
    tarnnet_info* first = tarnnet_get_info(TARNNET_EVERYTHING, &host);
    EXPECT_EQ(lines_of(first), all);
    EXPECT_EQ(line_of(*find_tarnnetif_info("eth0", 101, IFT_VETH)),
              "101:eth0 16 [] [] network=net1 peer=0:veth101.0");
    EXPECT_STREQ((*(*configured.vlans.begin()).vlans.begin()).name, "vlan0020") << "the style";

    inventory();  // the list of pairs is read anew, not added to
    Lines pairs;
    for (const veth_pair& pair : configured.veths)
        pairs.push_back(pair.host_name + std::string(" ") + pair.container_name);
    EXPECT_EQ(pairs, (Lines{"veth102.0 eth1", "veth101.0 eth0"}));

    std::filesystem::remove(state.host.more_pair_devices);
    std::filesystem::create_directories(state.host.more_pair_devices);
    std::filesystem::remove(state.host.vlans);
    std::filesystem::remove_all(state.host.interfaces);
    for (const std::string version : {"1.1", "1.0 ", "1.0 x"}) {
        write(state.host.pair_devices, "Version: " + version + "\nm veth101.0 m eth0 101\n");
        EXPECT_EQ(inventory(), (Lines{eth0, "vme1 2 [] []", far0})) << version;
    }
    EXPECT_EQ(inventory(0), (Lines{"eth0 2 [] [dhcp]", "vme1 2 [] []"})) << "nothing asked for";

    state.host.read_tables = [](uint32_t flags, link_tables* tables) {
        return give_messages(flags, tables) - 1;
    };
    std::filesystem::remove_all(state.host.scripts_dir);
    write(std::string(state.host.network_dir) + "/ifcfg-far0",
          "BOOTPROTO=dhcp\nBOOTPROTO=dhcp6\n#dhcp BOOTPROTO=none\nbootproto=dhcp\n");
    EXPECT_EQ(inventory(), Lines{"far0 1 [] [dhcp,dhcp]"}) << "nothing of a live read that failed";
    EXPECT_EQ(inventory(TARNNET_EVERYTHING, 0, 12),
              Lines{"far0 1 [] [10.9.0.1,10.9.0.2,dhcp,dhcp]"})
        << "without the live read, what is configured and marked is of one generation";
    EXPECT_EQ(lines_of(first), all) << "whatever inventories follow";
    tarnnet_release_info(first);
}

// One link alone is up, so that the kernel adds no addresses.
constexpr const char* make_links =
    "ip link add vnic0 index 14 type veth peer name port0 index 15 && ip link set vnic0 up &&"
    "ip address add 10.1.0.1/16 dev port0 && ip address add 127.0.0.9/8 dev lo &&"
    "ip address add fd00::9/64 dev port0 nodad";

TEST_F(MadeUpHost, IsReadFromTheKernelByAThreadWithASmallStack) {
    fill();
    state.host.read_tables = ask_kernel;
    const auto read_host = [](void* seen) {
        const bool own_network = unshare(CLONE_NEWNET) == 0 && std::system(make_links) == 0;
        for (const uint32_t flags : {TARNNET_EVERYTHING, TARNNET_READ_IPV4, TARNNET_READ_IPV6})
            static_cast<std::vector<Lines>*>(seen)->push_back(
                inventory(flags, 0, 0, IFT_ETHERNET | IFT_VNIC));
        return own_network ? seen : nullptr;
    };
    pthread_attr_t small;
    ASSERT_EQ(pthread_attr_init(&small), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&small, 32 * 1024), 0);
    pthread_t thread;
    void* own_network = nullptr;
    std::vector<Lines> seen;
    ASSERT_EQ(pthread_create(&thread, &small, read_host, &seen), 0);
    ASSERT_EQ(pthread_join(thread, &own_network), 0);
    if (own_network == nullptr) {
        GTEST_SKIP() << "the machine refuses a network of our own";
    }
    const std::string vnic0 = "vnic0 32 [] []";
    EXPECT_EQ(seen, (std::vector<Lines>{{"port0 2 [10.1.0.1/16,fd00::9/64] []", vnic0},
                                        {"port0 2 [10.1.0.1/16] []", vnic0},
                                        {"port0 2 [fd00::9/64] []", vnic0}}));
}

}  // namespace
