// What the host's configuration adds to the records: the library's own file before the live read,
// the distribution's interface files after it.
#pragma once

#include <stdint.h>

namespace tarnnet {

// Reads the configuration of the host (0) or of a container into its records, as an origin of its
// own. The library lock is held.
void read_single_conf(uint32_t flags, uint32_t veid);

// Appends "dhcp" to the configured addresses of every record of the host whose interface file asks
// for DHCP. Each marked record moves to the head of the inventory. 0, or -1 when there is no memory
// to walk the records. The library lock is held.
int check_sysconf();

}  // namespace tarnnet
