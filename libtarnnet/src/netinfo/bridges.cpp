#include "netinfo/bridges.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include "conf_lists.h"
#include "netinfo/records.h"
#include "tarnnet.h"

namespace {

const char net_path[] = "/sys/class/net";
const char virtual_path[] = "../../devices/virtual/net";  // from there
const size_t path_size = 512;

// The directory to look for "name/bridge" in, for the caller to close; -1 when there is none. On
// the kernel's own file system that is where the links of all bridges lead, as no hardware is below
// them: to follow the link of each of a thousand interfaces would cost as much as to ask for them.
int open_bridge_root(void) {
    const int listed = open(net_path, O_PATH | O_DIRECTORY | O_CLOEXEC);
    struct statfs status;
    if (listed < 0 || fstatfs(listed, &status) != 0 || status.f_type != SYSFS_MAGIC) {
        return listed;
    }
    const int virtual_devices = openat(listed, virtual_path, O_PATH | O_DIRECTORY | O_CLOEXEC);
    if (virtual_devices < 0) {
        return listed;
    }
    close(listed);
    return virtual_devices;
}

// Where is_bridge() looks, which a filter of scandir() cannot be told; the library lock guards it.
int bridge_root = -1;

// Of scandir(): the entries that have a directory "bridge".
int is_bridge(const struct dirent* entry) {
    char path[sizeof(entry->d_name) + sizeof("/bridge")];
    struct stat status;
    stpcpy(stpcpy(path, entry->d_name), "/bridge");
    return fstatat(bridge_root, path, &status, 0) == 0 && S_ISDIR(status.st_mode) ? 1 : 0;
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
    bridge_root = open_bridge_root();
    if (bridge_root < 0) {
        return;
    }
    struct dirent** entries = nullptr;
    const int count = scandir(net_path, &entries, is_bridge, alphasort);
    close(bridge_root);
    if (count < 0) {
        return;
    }
    for (int i = 0; i < count; ++i) {
        read_bridge(entries[i]->d_name);
    }
    free_entries(entries, count);
}
