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
const char virtual_path[] = "/sys/class/net/../../devices/virtual/net";
const size_t path_size = 512;

// To follow the link of an interface costs twice what it costs to look where it leads. On the
// kernel's own file system the link of a device without hardware leads to its namesake in a second
// directory, which is listed in the same order: the one that comes next in both is looked up there,
// every other one, and each when there is no such directory, through its link.
struct bridge_search {
    int interfaces;             // directory of all interfaces
    DIR* virtuals;              // directory of the devices without hardware, or NULL
    const struct dirent* next;  // the first of them not met yet, or NULL
};

// What is_bridge() uses, which a filter of scandir() cannot be told; the library lock guards it.
struct bridge_search search;

bool is_sysfs(int fd) {
    struct statfs status;
    return fstatfs(fd, &status) == 0 && status.f_type == SYSFS_MAGIC;
}

// Whether two directories show the devices of the same network namespace.
bool same_file_system(int a, int b) {
    struct stat left;
    struct stat right;
    return fstat(a, &left) == 0 && fstat(b, &right) == 0 && left.st_dev == right.st_dev;
}

DIR* open_virtuals(int interfaces) {
    DIR* virtuals = is_sysfs(interfaces) ? opendir(virtual_path) : nullptr;
    if (virtuals != nullptr && !same_file_system(interfaces, dirfd(virtuals))) {
        closedir(virtuals);
        virtuals = nullptr;
    }
    return virtuals;
}

bool is_dots(const char* name) {
    return strcmp(name, ".") == 0 || strcmp(name, "..") == 0;
}

void take_next_virtual(void) {
    do {
        search.next = readdir(search.virtuals);
    } while (search.next != nullptr && is_dots(search.next->d_name));
}

// 0, or -1 when there is nothing to search.
int begin_search(void) {
    search = {open(net_path, O_PATH | O_DIRECTORY | O_CLOEXEC), nullptr, nullptr};
    if (search.interfaces < 0) {
        return -1;
    }
    search.virtuals = open_virtuals(search.interfaces);
    if (search.virtuals != nullptr) {
        take_next_virtual();
    }
    return 0;
}

void end_search(void) {
    if (search.virtuals != nullptr) {
        closedir(search.virtuals);
    }
    close(search.interfaces);
}

// The directory in which to look for an interface, given in the order of the listing.
int directory_of(const char* name) {
    if (search.next == nullptr || strcmp(search.next->d_name, name) != 0) {
        return search.interfaces;
    }
    take_next_virtual();
    return dirfd(search.virtuals);
}

// Of scandir(): the entries that have a directory "bridge".
int is_bridge(const struct dirent* entry) {
    char path[sizeof(entry->d_name) + sizeof("/bridge")];
    struct stat status;
    stpcpy(stpcpy(path, entry->d_name), "/bridge");
    return fstatat(directory_of(entry->d_name), path, &status, 0) == 0 && S_ISDIR(status.st_mode)
               ? 1
               : 0;
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
    if (begin_search() != 0) {
        return;
    }
    struct dirent** entries = nullptr;
    const int count = scandir(net_path, &entries, is_bridge, alphasort);
    end_search();
    if (count < 0) {
        return;
    }
    for (int i = 0; i < count; ++i) {
        read_bridge(entries[i]->d_name);
    }
    free_entries(entries, count);
}
