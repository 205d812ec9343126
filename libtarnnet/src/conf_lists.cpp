#include "conf_lists.h"

#include <string.h>

#include <utility>

#include "state.h"
#include "text.h"
#include "vlan_naming.h"

namespace tarnnet {

conf_lists configured;

namespace {

// The set of that name, which is made when there is none; null without memory.
template <class Set>
Set* obtain_set(list<Set>* sets, char (Set::*set_name)[if_name_size], const char* name) {
    char cut[if_name_size];
    copy_cut(cut, sizeof(cut), name);
    for (Set& set : *sets) {
        if (strcmp(set.*set_name, cut) == 0) {
            return &set;
        }
    }
    auto* set = new Set;
    if (set != nullptr) {
        copy_cut(set->*set_name, sizeof(cut), cut);
        sets->add_head(set);
    }
    return set;
}

}  // namespace

int add_network(const char* network_id, const char* bridge) {
    owned_text id(strdup(network_id));
    auto* net = id ? new network : nullptr;
    if (net == nullptr) {
        return -1;
    }
    net->network_id = std::move(id);
    copy_cut(net->bridge, sizeof(net->bridge), bridge);
    net->master[0] = '\0';
    configured.networks.add_head(net);
    return 0;
}

network* find_network_by_br(const char* bridge) {
    for (network& net : configured.networks) {
        // The whole field is compared: a bridge name that had to be cut is found under its cut form
        // only.
        if (strncmp(net.bridge, bridge, if_name_size) == 0) {
            return &net;
        }
    }
    return nullptr;
}

int add_slave_iface(network* net, const char* ifname) {
    auto* slave = new slave_iface;
    if (slave == nullptr) {
        return -1;
    }
    copy_cut(slave->name, sizeof(slave->name), ifname);
    net->slaves.add_head(slave);
    return 0;
}

int add_vlan(const char* device, uint32_t vlan_id) {
    vlan_set* set = obtain_set(&configured.vlans, &vlan_set::device, device);
    if (set == nullptr) {
        return -1;
    }
    for (const vlan_entry& vlan : set->vlans) {
        if (vlan.vlan_id == vlan_id) {
            return 0;
        }
    }
    auto* vlan = new vlan_entry;
    if (vlan == nullptr) {
        return -1;
    }
    vlan->vlan_id = vlan_id;
    vlan_device_name(vlan->name, state.vlan_naming, device, vlan_id);
    set->vlans.add_head(vlan);
    return 0;
}

int add_iface_addr(const char* ifname, const char* address) {
    iface_addr_set* set = obtain_set(&configured.iface_addrs, &iface_addr_set::ifname, ifname);
    if (set == nullptr) {
        return -1;
    }
    char cut[conf_address_size];  // before it is compared: two long ones may be the same then
    copy_cut(cut, sizeof(cut), address);
    for (const iface_addr& known : set->addresses) {
        if (strcmp(known.text, cut) == 0) {
            return 0;
        }
    }
    auto* entry = new iface_addr;
    if (entry == nullptr) {
        return -1;
    }
    memcpy(entry->text, cut, sizeof(cut));
    set->addresses.add_head(entry);
    return 0;
}

int add_veth(const char* host_name, const char* container_name, uint32_t veid) {
    auto* pair = new veth_pair;
    if (pair == nullptr) {
        return -1;
    }
    copy_cut(pair->host_name, sizeof(pair->host_name), host_name);
    copy_cut(pair->container_name, sizeof(pair->container_name), container_name);
    pair->veid = veid;
    configured.veths.add_head(pair);
    return 0;
}

}  // namespace tarnnet
