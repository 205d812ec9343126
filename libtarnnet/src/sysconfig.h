// The distribution's interface files ("ifcfg-eth0"): which one belongs to an interface, and whether
// it asks for DHCP.
#pragma once

#include <stdint.h>

#include "owners.h"

namespace tarnnet {

// Appends "dhcp" to the configured addresses of every record of the host whose interface file asks
// for DHCP. Each marked record moves to the head of the inventory. 0, or -1 when there is no memory
// to walk the records. The caller holds the library lock.
int check_sysconf();

// The path of the interface file of an interface of that name, IFT_ kind and hardware address
// (either text may be null); nothing without one and without memory.
owned_text find_sysconfig(const char* name, uint32_t kind, const char* hwaddr);

// Whether a line of an interface file asks for DHCP.
bool ifcfg_line_asks_dhcp(const char* line);

// Whether a line of an interface file names that device.
bool ifcfg_line_names_device(const char* line, const char* name);

}  // namespace tarnnet
