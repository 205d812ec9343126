// The whole inventory, against the kernel and against made-up files.
#include <pthread.h>
#include <unistd.h>

#include "conf_lists.h"
#include "made_up_host.h"
#include "netinfo/kind_parsers.h"
#include "tests/support/private_host.h"

namespace {

TEST(Inventory, AsksTheKernelAndLeavesEarlierResultsValid) {
    private_host::run([] {
        if (access("/dev/net/tun", F_OK) != 0) {
            GTEST_SKIP() << "no /dev/net/tun";
        }
        ASSERT_EQ(mount("none", "/sys", "sysfs", 0, nullptr), 0);
        // Links stay down, so that the kernel adds no addresses.
        const auto run_ip = [](const std::string& commands) {
            return std::system(("echo '" + commands + "' | ip -batch -").c_str());
        };
        const char* const links =
            "link add br0 index 13 type bridge\n"
            "link add vnic0 index 14 type veth peer name port0 index 15\n"
            "link set port0 master br0\n"
            "tuntap add tun0 mode tun\n"
            "link set vnic0 up\n"
            "addr add 10.1.0.9/24 dev port0\n"
            "addr add 10.1.0.1/16 dev port0\n"
            "addr add fd00::9/64 dev port0 nodad\n"
            "addr add 127.0.0.9/8 dev lo\n";
        ASSERT_EQ(run_ip(links), 0);
        private_host::write_file("/etc/sysconfig/network/ifcfg-br0", " BOOTPROTO='dhcp'\n");
        // The marked one first, then the newest record first; the kernel gave tun0 the lowest
        // index.
        const Lines all = {
            "br0 4 [] [dhcp]",      ".. 1 [] [] bridge=br0",
            ". 1 [] [] bridge=br0", "port0 2 [10.1.0.9/24,10.1.0.1/16,fd00::9/64] [] bridge=br0",
            "vnic0 32 [] []",       "tun0 1 [] []",
        };
        tarnnet_filter host = {IFT_ALL, nullptr, nullptr, nullptr, 0, 0};
        tarnnet_info* first = tarnnet_get_info(TARNNET_EVERYTHING, &host);
        EXPECT_EQ(lines_of(first), all);
        const tarnnetif_info* up = find_tarnnetif_info("vnic0", 0, IFT_VNIC);
        const tarnnetif_info* down = find_tarnnetif_info("br0", 0, IFT_BRIDGE);
        ASSERT_TRUE(up != nullptr && down != nullptr);
        ASSERT_EQ(run_ip("link del br0"), 0);
        EXPECT_EQ(inventory(TARNNET_READ_IPV6),
                  (Lines{"port0 2 [fd00::9/64] []", "vnic0 32 [] []", "tun0 1 [] []"}));
        EXPECT_EQ(lines_of(first), all);
        EXPECT_TRUE(up->state == 1 && down->state == 2);
        EXPECT_EQ(up->link_flags & (IFF_UP | IFF_LOOPBACK), IFF_UP);
        EXPECT_EQ(up->set_mask, 6u | 1u | 16u | 128u | 512u | 0x10000u);
        tarnnet_release_info(first);
        EXPECT_EQ(netinfo.trash, nullptr);
    });
}

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
    EXPECT_EQ(inventory(), all);
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
    write(std::string(state.host.scripts_dir) + "/ifcfg-far0", "BOOTPROTO=dhcp\n");
    EXPECT_EQ(inventory(), Lines{"far0 1 [] [dhcp]"}) << "nothing of a live read that failed";
    EXPECT_EQ(inventory(TARNNET_EVERYTHING, 0, 12), Lines{"far0 1 [] [10.9.0.1,10.9.0.2,dhcp]"})
        << "without the live read, what is configured and marked is of one generation";
}

TEST_F(MadeUpHost, IsReadByAThreadWithASmallStack) {
    fill();
    state.host.read_tables = ask_kernel;
    pthread_attr_t small;
    ASSERT_EQ(pthread_attr_init(&small), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&small, 32 * 1024), 0);
    pthread_t thread;
    const auto read_host = [](void* lines) {
        *static_cast<Lines*>(lines) = inventory();
        return lines;
    };
    Lines lines;
    ASSERT_EQ(pthread_create(&thread, &small, read_host, &lines), 0);
    ASSERT_EQ(pthread_join(thread, nullptr), 0);
    EXPECT_GE(lines.size(), 9u);
}

}  // namespace
