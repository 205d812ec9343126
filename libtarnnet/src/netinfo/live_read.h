// The live read of one network namespace: its links with their addresses, and what they change in
// the records. Which namespaces are read is range_read's.
#pragma once

#include <stdint.h>

#include "netinfo/link_tables.h"

namespace tarnnet {

// One link with its addresses.
struct link_facts {
    char name[if_name_size];
    char addresses[address_line_size];  // separated by one blank
    char hwaddr[hwaddr_size];           // empty when there is none to show
    uint32_t flags;                     // IFF_ bits
};

// Is given each link, in the order of the kernel's answer.
using link_sink = void (*)(void* argument, const link_facts* facts);

// Reads the links of the calling process's network namespace. flags: TARNNET_READ_IPV4 and
// TARNNET_READ_IPV6 say which addresses to take. When they cannot be read to the last one the sink
// is never called.
void read_ifconfioctl_insider(uint32_t flags, link_sink sink, void* argument);

// Applies the facts of a link to the records of a container (0 for the host). The library lock is
// held.
void apply_link_facts(uint32_t veid, const link_facts* facts);

}  // namespace tarnnet
