// The host's network interfaces as the calculator keeps them, made from libtarnnet's records.
#pragma once

#include "calc/host_profile.h"

struct tarnnetif_info;

// What the calculator keeps of one interface; the record is only read.
NetIface make_net_iface(const tarnnetif_info& record);
