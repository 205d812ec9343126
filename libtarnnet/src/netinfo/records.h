// The interface records of the library: making, finding, updating and dropping them.
//
// Used by every reader that fills the inventory. The library lock is held by the caller of each
// function here. Nothing here reads a source.
#pragma once

#include <stdint.h>

#include "tarnnet.h"

// Update codes: what an update changes. A record's set_mask is the or of those applied to it.
enum {
    IFU_TYPE = 1,
    IFU_NAME = 2,  // fixed when the record is made
    IFU_VEID = 4,  // fixed when the record is made
    IFU_ORIGIN_NAME = 8,
    IFU_HWADDR = 16,
    IFU_BRIDGE = 32,
    IFU_NETWORK_ID = 64,
    IFU_ADDRESSES = 128,
    IFU_CONF_ADDRESSES = 256,
    IFU_STATE = 512,
    IFU_PEER_VEID = 1024,
    IFU_PEER_VEID_2 = 2048,  // another code for the same field
    IFU_PEER_NAME = 4096,
    IFU_VLAN_MASTER = 8192,
    IFU_VLAN_ID = 16384,
    IFU_LINK_FLAGS = 0x10000
};

// Sources of an origin.
enum { ORIGIN_LIVE = 0, ORIGIN_CONF = 1 };

// The generation of a record that was dropped while results held it.
enum { JUNK_GENERATION = -1 };

// The value of an update: a number or a text, as the code demands. A text may be NULL (no value);
// it is copied.
struct if_value {
    uint32_t number;
    const char* text;
};

static inline struct if_value number_value(uint32_t number) {
    return {number, nullptr};
}

static inline struct if_value text_value(const char* text) {
    return {0, text};
}

// What all records share.
struct record_state {
    int32_t next_generation;           // generation of the read in progress, never negative
    struct tarnnet_origin cur_origin;  // origin of the read in progress
    struct tarnnetif_info* last_ib;    // record touched last, or none
    struct tarnnetif_info* active;     // list of the records in the indexes, newest first
    struct tarnnetif_info* trash;      // replaced records that results still hold
};
extern struct record_state netinfo;  // NOLINT(bugprone-dynamic-static-initializers): all constants

// Starts a read: its records get this origin and a new generation.
void use_origin(uint32_t veid, uint32_t source);

// Makes a record at the head of the active list and in the indexes: a generic one, or with a
// template a copy of that one under the given name and container. No record of that name, container
// and kind may exist. NULL when memory is short; nothing has changed then.
struct tarnnetif_info* create_tarnnetif_info(const char* name, uint32_t veid,
                                             const struct tarnnetif_info* source);

// The record of that name, container and IFT_ kind, or NULL.
struct tarnnetif_info* find_tarnnetif_info(const char* name, uint32_t veid, uint32_t kind);

// Applies one IFU_ code to the record of that name and container, which is made when missing.
// A record that a result holds is not touched but replaced, at the head of the active list, when
// the value differs. Lists (IFU_ADDRESSES, IFU_CONF_ADDRESSES) take a text of blank-separated
// pieces: the first update of a generation empties the list, every update appends.
// Returns the record that carries the value, which is netinfo.last_ib from then on. NULL, and no
// last_ib, when memory is short (the value is not there, or a list only in part) or when the code
// is not one for a record of that kind (nothing has changed). The codes of name and container end
// the process.
struct tarnnetif_info* update_tarnnetif_info(const char* name, uint32_t veid, uint32_t code,
                                             struct if_value value);

// The same for a record at hand. When it was replaced meanwhile, which only a holder can see, its
// replacement is meant.
struct tarnnetif_info* update_tarnnetif_info_by_ptr(struct tarnnetif_info* record, uint32_t code,
                                                    struct if_value value);

// The same for the record touched last. Ends the process when there is none.
struct tarnnetif_info* update_last_tarnnetif_info(uint32_t code, struct if_value value);

// Takes a record out of the active list and the indexes; frees it, or keeps it in the trash list
// until its holders release it.
void junk_tarnnetif_info(struct tarnnetif_info* record);

// One holder less.
void unref_tarnnetif_info(struct tarnnetif_info* record);

// Junks the records of the current origin that the current generation did not touch.
void purge_old_generations(void);

// Junks every active record.
void purge_all_generations(void);

// The active records that match the filter (all for NULL), newest first, each held once more.
// Released with tarnnet_release_info_SL(). NULL when memory is short.
struct tarnnet_info* get_cached_info(const struct tarnnet_filter* filter);
