// The distribution's interface files ("ifcfg-eth0"): which one belongs to an interface, and whether
// it asks for DHCP. Knows nothing of records.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "owners.h"

namespace tarnnet {

// Whether there is a directory for interface files at all. Most hosts have none.
bool has_sysconfig();

// The path of the interface file of an interface of that name, IFT_ kind and hardware address
// (either text may be null); nothing without one and without memory.
owned_text find_sysconfig(const char* name, uint32_t kind, const char* hwaddr);

// How many lines of the interface file at that path ask for DHCP; 0 without such a file.
size_t count_dhcp_lines(const char* path);

// Whether a line of an interface file asks for DHCP.
bool ifcfg_line_asks_dhcp(const char* line);

// Whether a line of an interface file names that device.
bool ifcfg_line_names_device(const char* line, const char* name);

}  // namespace tarnnet
