// The whole inventory of made-up files and messages. Scenarios show that of the kernel's own.
#include "conf_lists.h"
#include "made_up_host.h"

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

}  // namespace
