#include "netinfo/bridges.h"

#include <dirent.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>

#include "conf_lists.h"
#include "netinfo/records.h"
#include "tarnnet.h"

namespace {

const char net_path[] = "/sys/class/net";
const size_t path_size = 512;

// Of scandir(): the entries that have a directory "bridge".
int is_bridge(const struct dirent* entry) {
    char path[path_size];
    struct stat status;
    snprintf(path, sizeof(path), "%s/%s/bridge", net_path, entry->d_name);
    return stat(path, &status) == 0 && S_ISDIR(status.st_mode) ? 1 : 0;
}

void free_entries(struct dirent** entries, int count) {
    for (int i = 0; i < count; ++i) {
        free(entries[i]);
    }
    free(entries);
}

// The record touched last joins a network, and so does the other end of a pair device.
void join_network(const char* network_id) {
    const struct tarnnetif_info* port =
        update_last_tarnnetif_info(IFU_NETWORK_ID, text_value(network_id));
    if (port != nullptr && port->type == IFT_VETH && port->data.veth.peer_name != nullptr) {
        update_tarnnetif_info(port->data.veth.peer_name, port->data.veth.peer_veid, IFU_NETWORK_ID,
                              text_value(network_id));
    }
}

void read_ports(const char* bridge, const char* network_id) {
    char path[path_size];
    snprintf(path, sizeof(path), "%s/%s/brif", net_path, bridge);
    struct dirent** entries = nullptr;
    // No filter: "." and ".." become records with this bridge as well, and callers rely on it.
    const int count = scandir(path, &entries, nullptr, alphasort);
    if (count < 0) {
        return;
    }
    for (int i = 0; i < count; ++i) {
        if (update_tarnnetif_info(entries[i]->d_name, 0, IFU_BRIDGE, text_value(bridge)) !=
                nullptr &&
            network_id != nullptr) {
            join_network(network_id);
        }
    }
    free_entries(entries, count);
}

void read_bridge(const char* name) {
    if (update_tarnnetif_info(name, 0, IFU_TYPE, number_value(IFT_BRIDGE)) == nullptr) {
        return;
    }
    const struct network* network = find_network_by_br(name);
    const char* network_id = network == nullptr ? nullptr : network->network_id;
    if (network_id != nullptr) {
        update_last_tarnnetif_info(IFU_NETWORK_ID, text_value(network_id));
    }
    read_ports(name, network_id);
}

}  // namespace

void read_bridges(void) {
    struct dirent** entries = nullptr;
    const int count = scandir(net_path, &entries, is_bridge, alphasort);
    if (count < 0) {
        return;
    }
    for (int i = 0; i < count; ++i) {
        read_bridge(entries[i]->d_name);
    }
    free_entries(entries, count);
}
