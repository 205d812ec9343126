// The interface records of the library: making, finding, updating and dropping them.
//
// Used by every reader that fills the inventory. The library lock is held by the caller of each
// function here. Nothing here reads a source.
#pragma once

#include <stdint.h>

#include "tarnnet.h"

namespace tarnnet {

// Update codes: what an update changes. A record's set_mask is the or of those applied to it. A
// code is good for every kind of record, but for those of a kind's own data.
constexpr uint32_t IFU_TYPE = 1;
constexpr uint32_t IFU_NAME = 2;  // fixed when the record is made
constexpr uint32_t IFU_VEID = 4;  // fixed when the record is made
constexpr uint32_t IFU_ORIGIN_NAME = 8;
constexpr uint32_t IFU_HWADDR = 16;
constexpr uint32_t IFU_BRIDGE = 32;
constexpr uint32_t IFU_NETWORK_ID = 64;
constexpr uint32_t IFU_ADDRESSES = 128;
constexpr uint32_t IFU_CONF_ADDRESSES = 256;
constexpr uint32_t IFU_STATE = 512;
constexpr uint32_t IFU_PEER_VEID = 1024;    // IFT_VETH
constexpr uint32_t IFU_PEER_VEID_2 = 2048;  // another code for the same field
constexpr uint32_t IFU_PEER_NAME = 4096;    // IFT_VETH
constexpr uint32_t IFU_VLAN_MASTER = 8192;  // IFT_VLAN
constexpr uint32_t IFU_VLAN_ID = 16384;     // IFT_VLAN
constexpr uint32_t IFU_LINK_FLAGS = 0x10000;

// Sources of an origin.
constexpr uint32_t origin_live = 0;
constexpr uint32_t origin_conf = 1;

// The generation of a record that was dropped while results held it.
constexpr int32_t junk_generation = -1;

// The value of an update: a number or a text, as the code demands. A text may be null (no value);
// it is copied.
struct if_value {
    uint32_t number;
    const char* text;
};

inline if_value number_value(uint32_t number) {
    return {number, nullptr};
}

inline if_value text_value(const char* text) {
    return {0, text};
}

// What all records share.
struct record_state {
    int32_t next_generation;    // generation of the read in progress, never negative
    tarnnet_origin cur_origin;  // origin of the read in progress
    tarnnetif_info* last_ib;    // record touched last, or none
    tarnnetif_info* active;     // list of the records in the indexes, newest first
    tarnnetif_info* trash;      // replaced records that results still hold
};
extern record_state netinfo;

// Starts a read: its records get this origin and a new generation.
void use_origin(uint32_t veid, uint32_t source);

// Makes a record at the head of the active list and in the indexes: a generic one, or with a
// template a copy of that one under the given name and container. No record of that name, container
// and kind may exist. null when memory is short; nothing has changed then.
tarnnetif_info* create_tarnnetif_info(const char* name, uint32_t veid,
                                      const tarnnetif_info* source);

// The record of that name, container and IFT_ kind, or null.
tarnnetif_info* find_tarnnetif_info(const char* name, uint32_t veid, uint32_t kind);

// Applies one IFU_ code to the record of that name and container, which is made when missing.
// A record that a result holds is not touched but replaced, at the head of the active list, when
// the value differs. Lists (IFU_ADDRESSES, IFU_CONF_ADDRESSES) take a text of blank-separated
// pieces: the first update of a generation empties the list, every update appends.
// Returns the record that carries the value, which is netinfo.last_ib from then on. Null, and no
// last_ib, when memory is short (the value is not there, or a list only in part) or when the code
// is not one for a record of that kind: a record that was missing has been made then, and one that
// was there is as it was. The codes of name and container end the process.
tarnnetif_info* update_tarnnetif_info(const char* name, uint32_t veid, uint32_t code,
                                      if_value value);

// The same for a record at hand. When it was replaced meanwhile, which only a holder can see, its
// replacement is meant.
tarnnetif_info* update_tarnnetif_info_by_ptr(tarnnetif_info* record, uint32_t code, if_value value);

// The same for the record touched last. Ends the process when there is none.
tarnnetif_info* update_last_tarnnetif_info(uint32_t code, if_value value);

// Takes a record out of the active list and the indexes; frees it, or keeps it in the trash list
// until its holders release it.
void junk_tarnnetif_info(tarnnetif_info* record);

// One holder less.
void unref_tarnnetif_info(tarnnetif_info* record);

// Junks the records of the current origin that the current generation did not touch.
void purge_old_generations();

// Junks every active record.
void purge_all_generations();

// The active records that match the filter (all for null), newest first, each held once more.
// Released with tarnnet_release_info_SL(). null when memory is short.
tarnnet_info* get_cached_info(const tarnnet_filter* filter);

}  // namespace tarnnet
