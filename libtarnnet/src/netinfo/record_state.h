// What the record operations share: the codes of a record's fields, and where the read in progress
// and the lists of records stand.
#pragma once

#include <stdint.h>

#include "tarnnet.h"

namespace tarnnet {

// Update codes: what an update changes. A record's set_mask is the or of those applied to it. A
// code is good for every kind of record, but for those of a kind's own data.
constexpr uint32_t IFU_TYPE = 1;
constexpr uint32_t IFU_NAME = 2;  // fixed when the record is made
constexpr uint32_t IFU_VEID = 4;  // fixed when the record is made
// Part of the interface; nothing in this project uses it.
constexpr uint32_t IFU_ORIGIN_NAME = 8;
constexpr uint32_t IFU_HWADDR = 16;
constexpr uint32_t IFU_BRIDGE = 32;
constexpr uint32_t IFU_NETWORK_ID = 64;
constexpr uint32_t IFU_ADDRESSES = 128;
constexpr uint32_t IFU_CONF_ADDRESSES = 256;
constexpr uint32_t IFU_STATE = 512;
constexpr uint32_t IFU_PEER_VEID = 1024;  // IFT_VETH
// Another code for that field. Part of the interface; nothing in this project uses it.
constexpr uint32_t IFU_PEER_VEID_2 = 2048;
constexpr uint32_t IFU_PEER_NAME = 4096;    // IFT_VETH
constexpr uint32_t IFU_VLAN_MASTER = 8192;  // IFT_VLAN
constexpr uint32_t IFU_VLAN_ID = 16384;     // IFT_VLAN
constexpr uint32_t IFU_LINK_FLAGS = 0x10000;

// Sources of an origin.
constexpr uint32_t origin_live = 0;
constexpr uint32_t origin_conf = 1;

// The generation of a record that was dropped while results held it.
constexpr int32_t junk_generation = -1;

// What all records share.
struct record_state {
    int32_t next_generation;    // generation of the read in progress, never negative
    tarnnet_origin cur_origin;  // origin of the read in progress
    tarnnetif_info* last_ib;    // record touched last, or none
    tarnnetif_info* active;     // list of the records in the indexes, newest first
    tarnnetif_info* trash;      // replaced records that results still hold
};
extern record_state netinfo;

}  // namespace tarnnet
