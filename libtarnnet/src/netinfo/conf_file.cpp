#include "netinfo/conf_file.h"

#include <errno.h>
#include <stddef.h>
#include <string.h>
#include <sys/stat.h>

#include "conf_lists.h"
#include "netinfo/kind_sources.h"
#include "netinfo/records.h"
#include "state.h"
#include "text.h"

namespace tarnnet {

namespace {

constexpr size_t longest_line = 255;  // characters, a longer line continues as the next one

struct conf_prefix {
    const char* text;
    conf_key key;
};

constexpr conf_prefix prefixes[] = {
    {"VNID_", CONF_NETWORK},
    {"IFLST_", CONF_INTERFACES},
    {"VLAN_", CONF_VLANS},
    {"ADDR_", CONF_ADDRESSES},
};

const conf_prefix* prefix_of(const char* line) {
    for (const conf_prefix& prefix : prefixes) {
        if (has_prefix(line, prefix.text)) {
            return &prefix;
        }
    }
    return nullptr;
}

// The first interface of a network is its master, the others are its slaves.
void add_member(network* net, const char* ifname) {
    if (net->master[0] == '\0') {
        copy_cut(net->master, sizeof(net->master), ifname);
    } else {
        add_slave_iface(net, ifname);
    }
}

void take_interfaces(const char* bridge, char* words) {
    network* net = find_network_by_br(bridge);
    if (net == nullptr) {
        return;  // its VNID_ line has to come first
    }
    while (const char* word = strsep(&words, " ")) {
        if (*word != '\0') {
            add_member(net, word);
        }
    }
}

void take_vlans(const char* device, char* words) {
    while (const char* word = strsep(&words, " ")) {
        if (*word != '\0') {
            add_vlan(device, decimal(word));
        }
    }
}

// Empty words count here: an empty value makes the interface's record too, without an address.
void take_addresses(const char* ifname, char* words) {
    while (const char* word = strsep(&words, " ")) {
        add_iface_addr(ifname, word);
        update_tarnnetif_info(ifname, 0, IFU_CONF_ADDRESSES, text_value(word));
    }
}

void take_line(const conf_line* line) {
    switch (line->key) {
        case CONF_NETWORK:
            add_network(line->value, line->name);
            break;
        case CONF_INTERFACES:
            take_interfaces(line->name, line->value);
            break;
        case CONF_VLANS:
            take_vlans(line->name, line->value);
            break;
        case CONF_ADDRESSES:
            take_addresses(line->name, line->value);
            break;
        case CONF_NONE:
            break;
    }
}

int read_conf_file() {
    text_file file(state.host.configuration);
    if (!file.is_read()) {
        return 1;
    }
    while (char* text = file.next_line(longest_line)) {
        const conf_line line = parse_conf_line(text);
        take_line(&line);
    }
    return 0;
}

}  // namespace

// VNID_br0="network7"
// IFLST_br0="eth0 eth1"
// VLAN_eth1="10 20"
// ADDR_eth0="10.0.0.1/24 10.0.0.2/24"
// What stands behind the second quote does not matter; a value without quotes is none.
conf_line parse_conf_line(char* line) {
    conf_line parsed = {CONF_NONE, nullptr, nullptr};
    const conf_prefix* prefix = prefix_of(line);
    if (prefix == nullptr) {
        return parsed;
    }
    char* name = line + strlen(prefix->text);
    char* equals = strchr(name, '=');
    if (equals == nullptr || equals[1] != '"') {
        return parsed;
    }
    char* value = equals + 2;
    char* closing = strchr(value, '"');
    if (closing == nullptr) {
        return parsed;
    }
    *equals = '\0';
    *closing = '\0';
    parsed = {prefix->key, name, value};
    return parsed;
}

int read_tarnnetconf(int force) {
    // Also when there is nothing to read, so that what was configured once does not stay. The style
    // first: the names of the VLANs are made by it.
    configured.networks.flush();
    configured.vlans.flush();
    configured.iface_addrs.flush();
    read_vlan_config(0);

    struct stat status;
    if (stat(state.host.configuration, &status) < 0) {
        return errno == ENOENT ? 0 : 1;
    }
    if (force == 0 && status.st_mtime == state.conf_time) {
        return 0;
    }
    return read_conf_file();
}

}  // namespace tarnnet
