// The host's network interfaces as the calculator keeps them, made from libtarnnet's records.
#pragma once

#include "inspect/records.h"
#include "kiln/result.h"

struct tarnnetif_info;

// What the calculator keeps of one interface; the record is only read.
NetIface make_net_iface(const tarnnetif_info& record);

// The interfaces that a container may get, in the library's order; or why they cannot be listed.
Kiln::Result<NetIfaceList> list_net_ifaces();
