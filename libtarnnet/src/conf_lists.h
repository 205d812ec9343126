// What the configuration says about networks, VLANs, pair devices and addresses, kept for the
// process in lists. The caller holds the library lock. Every add copies its texts (names are cut to
// 15 characters) and returns 0, or -1 without memory: that entry is then left out. New entries go
// to the head of their list.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "list.h"
#include "vlan_naming.h"

constexpr size_t address_size = 20;  // 19 characters and the NUL

struct slave_iface {
    struct list_node node;
    char name[if_name_size];
};

// A configured network: the bridge that carries it and the interfaces joined to it.
struct network {
    struct list_node node;
    char* network_id;  // owned
    char bridge[if_name_size];
    char master[if_name_size];  // empty until set
    struct list_node slaves;    // of slave_iface
};

// The entries configured for one interface.
struct iface_set {
    struct list_node node;
    char ifname[if_name_size];
    struct list_node entries;  // of vlan_entry or iface_addr
};

struct vlan_entry {
    struct list_node node;
    uint32_t vlan_id;
    char name[if_name_size];  // of the VLAN device, in the naming style of the time
};

struct iface_addr {
    struct list_node node;
    char text[address_size];
};

struct veth_pair {
    struct list_node node;
    char host_name[if_name_size];
    char container_name[if_name_size];
    uint32_t veid;
};

int add_network(const char* network_id, const char* bridge);

// The network added last for that bridge, or null. Owned by the list.
struct network* find_network_by_br(const char* bridge);

int add_slave_iface(struct network* net, const char* ifname);

// Sets: what the device has already is left as it is.
int add_vlan(const char* device, uint32_t vlan_id);
int add_iface_addr(const char* ifname, const char* address);

int add_veth(const char* host_name, const char* container_name, uint32_t veid);

void flush_networks();
void flush_vlans();
void flush_veths();
void flush_iface_addrs();

// The heads, for walking: of network, iface_set (of vlan_entry), veth_pair and iface_set (of
// iface_addr).
struct list_node* network_list();
struct list_node* vlan_list();
struct list_node* veth_list();
struct list_node* iface_addr_list();
