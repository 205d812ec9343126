// What the kernel shows of a bridge br0 with a port eth0:
//
//     /sys/class/net/br0/bridge/      a directory; other interfaces have none
//     /sys/class/net/br0/brif/eth0    a link to the port
#include "netinfo/bridges.h"

#include <stdio.h>
#include <sys/stat.h>

#include "conf_lists.h"
#include "netinfo/records.h"
#include "owners.h"
#include "state.h"

namespace tarnnet {

namespace {

// The record touched last joins a network, and so does the other end of a pair device.
void set_network_id(const char* network_id) {
    const tarnnetif_info* port = update_last_tarnnetif_info(IFU_NETWORK_ID, text_value(network_id));
    if (port != nullptr && port->type == IFT_VETH && port->data.veth.peer_name != nullptr) {
        update_tarnnetif_info(port->data.veth.peer_name, port->data.veth.peer_veid, IFU_NETWORK_ID,
                              text_value(network_id));
    }
}

void read_ports(const char* bridge, const char* network_id) {
    char path[path_size];
    snprintf(path, sizeof(path), "%s/%s/brif", state.host.interfaces, bridge);
    const dir_listing ports(path);
    // "." and ".." are not left out: they become records of this bridge as well, which callers that
    // ask for generic interfaces are given.
    for (int i = 0; i < ports.count(); ++i) {
        if (update_tarnnetif_info(ports.name(i), 0, IFU_BRIDGE, text_value(bridge)) != nullptr &&
            network_id != nullptr) {
            set_network_id(network_id);
        }
    }
}

void read_bridge(const char* name) {
    if (update_tarnnetif_info(name, 0, IFU_TYPE, number_value(IFT_BRIDGE)) == nullptr) {
        return;
    }
    const network* net = find_network_by_br(name);
    const char* network_id = net == nullptr ? nullptr : net->network_id.get();
    if (network_id != nullptr) {
        update_last_tarnnetif_info(IFU_NETWORK_ID, text_value(network_id));
    }
    read_ports(name, network_id);
}

bool is_bridge(const char* name) {
    char path[path_size];
    snprintf(path, sizeof(path), "%s/%s/bridge", state.host.interfaces, name);
    struct stat status;
    return stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

}  // namespace

void read_bridges() {
    const dir_listing interfaces(state.host.interfaces);  // in the order of the names
    for (int i = 0; i < interfaces.count(); ++i) {
        if (is_bridge(interfaces.name(i))) {
            read_bridge(interfaces.name(i));
        }
    }
}

}  // namespace tarnnet
