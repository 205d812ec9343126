// The interface records of the library: making, finding, updating and dropping them.
//
// Used by every reader that fills the inventory. The library lock is held by the caller of each
// function here. Nothing here reads a source.
#pragma once

#include <stdint.h>

#include "netinfo/record_state.h"
#include "tarnnet.h"

namespace tarnnet {

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

// Starts a read: its records get this origin and a new generation.
void use_origin(uint32_t veid, uint32_t source);

// Makes a record at the head of the active list and in the indexes: a generic one, or with a
// template a copy of that one under the given name and container. No record of that name, container
// and kind may exist. null when memory is short; nothing has changed then. The template:
// Part of the interface; nothing in this project uses it.
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
