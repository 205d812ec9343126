// What the configuration says about networks, VLANs, pair devices and addresses, kept for the
// process in lists. The caller holds the library lock. Every add copies its texts (names are cut to
// 15 characters) and returns 0, or -1 without memory: that entry is then left out. New entries go
// to the head of their list.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "if_name.h"
#include "list.h"
#include "owners.h"

namespace tarnnet {

constexpr size_t conf_address_size = 20;  // 19 characters and the NUL

struct slave_iface : list_entry {
    char name[if_name_size];
};

// A configured network: the bridge that carries it and the interfaces joined to it.
struct network : list_entry {
    ~network() { slaves.flush(); }
    owned_text network_id;
    char bridge[if_name_size];
    char master[if_name_size];  // empty until set
    list<slave_iface> slaves;
};

struct vlan_entry : list_entry {
    uint32_t vlan_id;
    char name[if_name_size];  // of the VLAN device, in the naming style of the time
};

// The VLANs of one device, each id once.
struct vlan_set : list_entry {
    ~vlan_set() { vlans.flush(); }
    char device[if_name_size];
    list<vlan_entry> vlans;
};

struct iface_addr : list_entry {
    char text[conf_address_size];
};

// The addresses of one interface, each text once.
struct iface_addr_set : list_entry {
    ~iface_addr_set() { addresses.flush(); }
    char ifname[if_name_size];
    list<iface_addr> addresses;
};

struct veth_pair : list_entry {
    char host_name[if_name_size];
    char container_name[if_name_size];
    uint32_t veid;
};

// The inventory takes a bridge's network from the networks. What else stands in these lists is for
// those who would change the host's network. Part of the interface; nothing in this project uses
// it.
struct conf_lists {
    list<network> networks;
    list<vlan_set> vlans;
    list<veth_pair> veths;
    list<iface_addr_set> iface_addrs;
};
extern conf_lists configured;

int add_network(const char* network_id, const char* bridge);

// The network added last for that bridge, or null. Owned by the list.
network* find_network_by_br(const char* bridge);

int add_slave_iface(network* net, const char* ifname);

// Sets: what the device or interface has already is left as it is.
int add_vlan(const char* device, uint32_t vlan_id);
int add_iface_addr(const char* ifname, const char* address);

int add_veth(const char* host_name, const char* container_name, uint32_t veid);

}  // namespace tarnnet
