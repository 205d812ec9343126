// The two indexes of the active records, both search trees.
//
// The main index finds a record by kind, container and name; the network index by kind, configured
// network, container and name. Used by the record operations only; the kind and the network that a
// record is filed under are given by the caller, as both can change.
#pragma once

#include <stdint.h>

#include "tarnnet.h"

namespace tarnnet {

// Files the record under a kind and, unless that is null, a network. 0, or -1 with nothing filed:
// memory is short, the kind is none, or another record has the place.
int index_insert(tarnnetif_info* record, uint32_t kind, const char* network_id);

// Takes the record out of where it was filed.
void index_remove(const tarnnetif_info* record, uint32_t kind, const char* network_id);

// Takes every record out, at a fraction of what taking out each one costs.
void index_clear();

// Puts another record of the same name, container, kind and network in its place. Never fails.
void index_replace(const tarnnetif_info* record, tarnnetif_info* other);

// The network index alone.
int network_index_insert(tarnnetif_info* record, uint32_t kind, const char* network_id);
void network_index_remove(const tarnnetif_info* record, uint32_t kind, const char* network_id);

// The record that is filed there, or null.
tarnnetif_info* index_find(const char* name, uint32_t veid, uint32_t kind);
// Part of the interface; nothing in this project calls it.
tarnnetif_info* network_index_find(const char* network_id, const char* name, uint32_t veid,
                                   uint32_t kind);

}  // namespace tarnnet
