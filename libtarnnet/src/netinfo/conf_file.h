// The library's own configuration file, "/etc/tarn/tarnnet.conf".
#pragma once

namespace tarnnet {

// What a line of the file sets.
enum conf_key {
    CONF_NONE,        // nothing: a comment, an unknown or a malformed line
    CONF_NETWORK,     // VNID_<bridge>="<network id>"
    CONF_INTERFACES,  // IFLST_<bridge>="<interface> ..."
    CONF_VLANS,       // VLAN_<device>="<VLAN id> ..."
    CONF_ADDRESSES,   // ADDR_<interface>="<address> ..."
};

struct conf_line {
    conf_key key;
    char* name;   // the key without its prefix
    char* value;  // what the quotes enclose
};

// Takes one line apart, in place: name and value point into `line`.
conf_line parse_conf_line(char* line);

// Reads the file into the configured lists, which are emptied first, and gives the host's records
// their configured addresses; the VLAN naming style is read anew as well. 0, also when there is no
// file; 1 when it cannot be examined or read, with nothing taken from it. Unless `force`, a file
// whose modification time is the one that the library remembers as its own is not read. The caller
// holds the library lock. `force`: Part of the interface; nothing in this project uses it.
int read_tarnnetconf(int force);

}  // namespace tarnnet
