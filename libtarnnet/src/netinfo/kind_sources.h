// The files that tell of what kind an interface is.
//
// Used by the inventory; the VLAN file is read by the configuration reader too.
#pragma once

namespace tarnnet {

// Reads pair devices, VLANs and bridges and classifies the records of the host, in that order. A
// file that is missing or of another version is left out. The library lock is held.
void read_iface_types();

// Reads "/proc/net/vlan/config": keeps the naming style in state.vlan_naming and, unless
// make_records is 0, makes a record of each VLAN device. The library lock is held.
void read_vlan_config(int make_records);

}  // namespace tarnnet
