// Where the host is: the one table of its paths, and the way to ask its kernel. The library's state
// holds it with the values below; only tests put others there.
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace tarnnet {

struct link_tables;

// The links of the calling process's network namespace with their addresses, from its kernel.
// flags: TARNNET_READ_IPV4 and TARNNET_READ_IPV6 say which addresses to take. 0, or -1 with the
// reason printed to standard error.
int ask_kernel(uint32_t flags, link_tables* tables);

struct host_source {
    const char* pair_devices = "/proc/tarn/veth";
    const char* more_pair_devices = "/proc/tarn/vmth";
    const char* vlans = "/proc/net/vlan/config";
    const char* interfaces = "/sys/class/net";
    const char* configuration = "/etc/tarn/tarnnet.conf";
    const char* scripts_dir = "/etc/sysconfig/network-scripts";
    const char* network_dir = "/etc/sysconfig/network";
    const char* suse_release = "/etc/SuSE-release";
    const char* lock_file = "/tmp/tarnnetcfg.lck";
    const char* log_file = "/var/log/tarnnetcfg.log";
    int (*read_tables)(uint32_t flags, link_tables* tables) = ask_kernel;
};

// Paths below these are put together in buffers of this size and cut there.
constexpr size_t path_size = 512;

}  // namespace tarnnet
