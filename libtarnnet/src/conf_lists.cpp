#include "conf_lists.h"

#include <string.h>

#include "text.h"

namespace {

struct list_node g_networks = {&g_networks, &g_networks};
struct list_node g_vlans = {&g_vlans, &g_vlans};
struct list_node g_veths = {&g_veths, &g_veths};
struct list_node g_iface_addrs = {&g_iface_addrs, &g_iface_addrs};

template <class Entry>
Entry* make_entry() {
    return static_cast<Entry*>(calloc(1, sizeof(Entry)));
}

void free_network(struct network* net) {
    list_flush<slave_iface>(&net->slaves, free);
    free(net->network_id);
    free(net);
}

template <class Entry>
void free_set(struct iface_set* set) {
    list_flush<Entry>(&set->entries, free);
    free(set);
}

struct iface_set* find_set(struct list_node* sets, const char* ifname) {
    char cut[if_name_size];
    copy_cut(cut, sizeof(cut), ifname);
    return list_find<iface_set>(
        sets, [&cut](const struct iface_set* set) { return strcmp(set->ifname, cut) == 0; });
}

// Puts `entry`, which may be null for want of memory, into the set of `ifname`, making the set when
// it is the first entry. Owns `entry` in every case.
template <class Entry>
int add_to_set(struct list_node* sets, const char* ifname, Entry* entry) {
    if (entry == nullptr) {
        return -1;
    }
    struct iface_set* set = find_set(sets, ifname);
    if (set == nullptr) {
        set = make_entry<iface_set>();
        if (set == nullptr) {
            free(entry);
            return -1;
        }
        copy_cut(set->ifname, sizeof(set->ifname), ifname);
        list_init(&set->entries);
        list_add_head(sets, &set->node);
    }
    list_add_head(&set->entries, &entry->node);
    return 0;
}

template <class Entry, class Accepts>
bool set_has(struct list_node* sets, const char* ifname, Accepts accepts) {
    struct iface_set* set = find_set(sets, ifname);
    return set != nullptr && list_find<Entry>(&set->entries, accepts) != nullptr;
}

}  // namespace

int add_network(const char* network_id, const char* bridge) {
    auto* net = make_entry<network>();
    if (net == nullptr) {
        return -1;
    }
    list_init(&net->slaves);
    net->network_id = strdup(network_id);
    if (net->network_id == nullptr) {
        free_network(net);
        return -1;
    }
    copy_cut(net->bridge, sizeof(net->bridge), bridge);
    list_add_head(&g_networks, &net->node);
    return 0;
}

struct network* find_network_by_br(const char* bridge) {
    // The whole field is compared: a bridge name that had to be cut is found under its cut form
    // only.
    return list_find<network>(&g_networks, [bridge](const struct network* net) {
        return strncmp(net->bridge, bridge, if_name_size) == 0;
    });
}

int add_slave_iface(struct network* net, const char* ifname) {
    auto* slave = make_entry<slave_iface>();
    if (slave == nullptr) {
        return -1;
    }
    copy_cut(slave->name, sizeof(slave->name), ifname);
    list_add_head(&net->slaves, &slave->node);
    return 0;
}

int add_vlan(const char* device, uint32_t vlan_id) {
    const auto same_id = [vlan_id](const vlan_entry* vlan) { return vlan->vlan_id == vlan_id; };
    if (set_has<vlan_entry>(&g_vlans, device, same_id)) {
        return 0;
    }
    auto* vlan = make_entry<vlan_entry>();
    if (vlan != nullptr) {
        vlan->vlan_id = vlan_id;
        vlan_device_name(vlan->name, vlan_naming(), device, vlan_id);
    }
    return add_to_set(&g_vlans, device, vlan);
}

int add_iface_addr(const char* ifname, const char* address) {
    char cut[address_size];
    copy_cut(cut, sizeof(cut), address);
    const auto same_text = [&cut](const iface_addr* addr) { return strcmp(addr->text, cut) == 0; };
    if (set_has<iface_addr>(&g_iface_addrs, ifname, same_text)) {
        return 0;
    }
    auto* addr = make_entry<iface_addr>();
    if (addr != nullptr) {
        memcpy(addr->text, cut, sizeof(cut));
    }
    return add_to_set(&g_iface_addrs, ifname, addr);
}

int add_veth(const char* host_name, const char* container_name, uint32_t veid) {
    auto* pair = make_entry<veth_pair>();
    if (pair == nullptr) {
        return -1;
    }
    copy_cut(pair->host_name, sizeof(pair->host_name), host_name);
    copy_cut(pair->container_name, sizeof(pair->container_name), container_name);
    pair->veid = veid;
    list_add_head(&g_veths, &pair->node);
    return 0;
}

void flush_networks() {
    list_flush<network>(&g_networks, free_network);
}

void flush_vlans() {
    list_flush<iface_set>(&g_vlans, free_set<vlan_entry>);
}

void flush_veths() {
    list_flush<veth_pair>(&g_veths, free);
}

void flush_iface_addrs() {
    list_flush<iface_set>(&g_iface_addrs, free_set<iface_addr>);
}

struct list_node* network_list() {
    return &g_networks;
}

struct list_node* vlan_list() {
    return &g_vlans;
}

struct list_node* veth_list() {
    return &g_veths;
}

struct list_node* iface_addr_list() {
    return &g_iface_addrs;
}
