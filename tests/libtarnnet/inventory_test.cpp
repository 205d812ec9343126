// The whole inventory, against the kernel and against made-up files.
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <net/if.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/syscall.h>

#include <cerrno>
#include <cstddef>

#include "inventory_host.h"
#include "netinfo/kind_parsers.h"
#include "netinfo/kind_sources.h"
#include "netinfo/records.h"

namespace {

using inventory_host::empty;
using inventory_host::inventory;
using inventory_host::Lines;
using inventory_host::run_ip;
using inventory_host::show_own_sys;
using private_host::write_file;

TEST(Inventory, ReadsLinksAddressesBridgesConfigurationAndDhcp) {
    private_host::run([] {
        show_own_sys();
        run_ip(
            "link add pair0 index 11 type veth peer name a-name-of-15-ch index 12\n"
            "link add br0 index 13 type bridge\n"
            "link add vnic0 index 14 type veth peer name port0 index 15\n"
            "link set port0 master br0\n"
            "tuntap add tun0 mode tun\n"
            "link set port0 up\n"
            "addr add 10.1.0.9/24 dev pair0\n"
            "addr add 10.1.0.1/16 dev pair0\n"
            "addr add fd00::9/64 dev pair0 nodad\n"
            "addr add 10.3.0.1 peer 10.4.0.1 dev vnic0\n"
            "addr add 127.0.0.9/8 dev lo\n");
        write_file("/etc/tarn/tarnnet.conf",
                   "VNID_br0=\"net1\"\nADDR_far0=\"10.9.0.1 10.9.0.2\"\nADDR_pair0=\"10.9.0.3\"\n");
        write_file("/etc/sysconfig/network-scripts/ifcfg-pair0", "BOOTPROTO=dhcp\n");
        write_file("/etc/sysconfig/network/ifcfg-br0", " BOOTPROTO='dhcp'\n");
        // The marked ones first, the last marked at the head; then the newest record first.
        EXPECT_EQ(inventory(), (Lines{
                                   "pair0 2 [10.1.0.9/24,10.1.0.1/16,fd00::9/64] [dhcp]",
                                   "br0 4 [] [dhcp] network=net1",
                                   ".. 1 [] [] bridge=br0 network=net1",
                                   ". 1 [] [] bridge=br0 network=net1",
                                   "port0 2 [] [] bridge=br0 network=net1",
                                   "vnic0 32 [10.3.0.1] []",
                                   "a-name-of-15-ch 2 [] []",
                                   "tun0 1 [] []",  // the kernel gave it the lowest index
                                   "far0 1 [] [10.9.0.1,10.9.0.2]",
                               }));
        EXPECT_EQ(inventory(TARNNET_READ_IPV6).front(), "pair0 2 [fd00::9/64] [dhcp]");
        EXPECT_EQ(inventory(TARNNET_READ_CONF)[1], "br0 4 [] [dhcp] network=net1");
    });
}

TEST(Inventory, TellsStateAndFlagsAndLeavesEarlierResultsValid) {
    private_host::run([] {
        run_ip(
            "link add up0 address 02:00:00:00:0a:01 type veth peer name down0\n"
            "addr add 10.1.0.1/24 dev down0\nlink set up0 up\n");
        EXPECT_EQ(inventory(0, 0, INT32_MAX), Lines{}) << "so wide a range leaves the host out";
        tarnnet_filter* filter =
            tarnnet_get_simple_filter(IFT_ALL, nullptr, nullptr, nullptr, 0, 0);
        tarnnet_info* first = tarnnet_get_info(TARNNET_READ_IPV4, filter);
        const tarnnetif_info* down = find_tarnnetif_info("down0", 0, IFT_ETHERNET);
        const tarnnetif_info* up = find_tarnnetif_info("up0", 0, IFT_ETHERNET);
        ASSERT_TRUE(first != nullptr && up != nullptr && down != nullptr);
        const Lines before = inventory_host::lines_of(first);
        run_ip("link del up0\nlink add new0 type veth peer name new1\n");
        tarnnet_info* second = tarnnet_get_info(TARNNET_READ_IPV4, filter);
        EXPECT_EQ(inventory_host::lines_of(second), (Lines{"new0 2 [] []", "new1 2 [] []"}));
        EXPECT_EQ(inventory_host::lines_of(first), before);
        EXPECT_STREQ(up->hwaddr, "02:00:00:00:0a:01");
        EXPECT_EQ(up->state, 1u);
        EXPECT_EQ(up->link_flags & (IFF_UP | IFF_LOOPBACK), IFF_UP);
        EXPECT_EQ(up->set_mask, 6u | 1u | 16u | 128u | 512u | 0x10000u);
        EXPECT_EQ(down->state, 2u);
        tarnnet_release_info(first);
        EXPECT_EQ(netinfo.trash, nullptr);
        tarnnet_release_info(second);
        tarnnet_release_filter(filter);
    });
}

// A link whose kinds, pairs and bridge come from files alone.
TEST(Inventory, ClassifiesByFiles) {
    private_host::run([] {
        run_ip("link add eth0 type veth peer name vme1\n");
        empty("/proc");
        empty("/sys");
        write_file("/etc/tarn/tarnnet.conf", "VNID_br0=\"net1\"\n");
        write_file("/proc/tarn/veth",
                   "Version: 1.0\n"
                   "00:18:51:0C:7A:01   veth101.0 00:18:51:0C:7A:02  eth0     101 allow\n"
                   "too few fields\n"
                   "m veth102.0 m eth1 102");
        write_file("/proc/tarn/vmth", "Version: 1.0\nvme1\n\nvme2 more\n");
        write_file("/proc/net/vlan/config",
                   "VLAN Dev name    | VLAN ID\n"
                   "Name-Type: VLAN_NAME_TYPE_RAW_PLUS_VID_NO_PAD\n"
                   "eth0.10        | 10  | eth0\n"
                   "eth0.20        | 20\n");
        write_file("/sys/class/net/br1/bridge/x", "");
        write_file("/sys/class/net/br0/bridge/x", "");
        write_file("/sys/class/net/br0/brif/veth101.0", "");
        write_file("/sys/class/net/notbr/bridge", "");
        EXPECT_EQ(inventory(), (Lines{
                                   "br1 4 [] []",
                                   ".. 1 [] [] bridge=br0 network=net1",
                                   ". 1 [] [] bridge=br0 network=net1",
                                   "br0 4 [] [] network=net1",
                                   "eth0.10 8 [] [] vlan=10 master=eth0",
                                   "vme2 16 [] []",
                                   "veth102.0 16 [] [] peer=102:eth1",
                                   "veth101.0 16 [] [] bridge=br0 network=net1 peer=101:eth0",
                                   "eth0 2 [] []",
                                   "vme1 16 [] []",
                               }));
        const tarnnetif_info* inside = find_tarnnetif_info("eth0", 101, IFT_VETH);
        ASSERT_NE(inside, nullptr);
        EXPECT_EQ(inventory_host::line_of(*inside),
                  "101:eth0 16 [] [] network=net1 peer=0:veth101.0");

        write_file("/proc/tarn/veth", "Version: 1.1\nm veth101.0 m eth0 101\n");
        std::filesystem::remove("/proc/tarn/vmth");
        std::filesystem::create_directories("/proc/tarn/vmth");
        std::filesystem::remove("/proc/net/vlan/config");
        std::filesystem::remove_all("/sys/class");
        EXPECT_EQ(inventory(), (Lines{"eth0 2 [] []", "vme1 2 [] []"}));
    });
}

// The directory itself is asked like any other entry, where the kernel's own /sys is as well.
TEST(Inventory, TakesTheDirectoryForABridgeBesideALinkOfThatName) {
    private_host::run([] {
        show_own_sys();
        run_ip("link add bridge index 31 type bridge\nlink add br0 index 32 type bridge\n");
        EXPECT_EQ(inventory(0), (Lines{".. 1 [] [] bridge=bridge", ". 4 [] [] bridge=bridge",
                                       "br0 4 [] []", "bridge 4 [] []"}));
    });
}

TEST(KindFile, IsOfOneVersionAndGivesTheVlanNamingWord) {
    const char* known[] = {"Version: 1.0\n", "  Version:   1.0\n"};
    const char* unknown[] = {"Version: 1.0",
                             "Version: 1.0 \n",
                             "Version: 2.0\n",
                             "Version: 1.0 x\n",
                             "Version:\t1.0\n",
                             "Version: 1.0\r\n",
                             ""};
    const char* naming[] = {"Name-Type: WORD\n", "Name-Type:WORD", " Name-Type : WORD rest\n"};
    const char* other[] = {"", "\n", "Name-Type:\n", "Name-Types: WORD\n", "WORD\n"};
    for (std::string line : known)
        EXPECT_TRUE(is_known_version(line.data())) << line;
    for (std::string line : unknown)
        EXPECT_FALSE(is_known_version(line.data())) << line;
    for (std::string line : naming)
        EXPECT_STREQ(parse_vlan_naming_line(line.data()), "WORD");
    for (std::string line : other)
        EXPECT_EQ(parse_vlan_naming_line(line.data()), nullptr) << line;
}

// From here on no netlink socket can be made in this process.
bool refuse_netlink() {
    sock_filter code[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_socket, 0, 3),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, args)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, AF_NETLINK, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog program = {sizeof code / sizeof *code, code};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

TEST(Inventory, GoesOnWithItsOtherSourcesWhenNetlinkIsRefused) {
    private_host::run([] {
        show_own_sys();
        run_ip("link add br0 type bridge\n");
        write_file("/etc/tarn/tarnnet.conf", "ADDR_eth7=\"10.9.0.1\"\n");
        ASSERT_TRUE(refuse_netlink());
        EXPECT_EQ(inventory(), (Lines{".. 1 [] [] bridge=br0", ". 1 [] [] bridge=br0",
                                      "br0 4 [] []", "eth7 1 [] [10.9.0.1]"}));
    });
}

}  // namespace
