// Makes, copies and frees single records. The caller puts a record into the lists and indexes, and
// takes it out of them before it is freed.
#pragma once

#include <stdint.h>

#include "tarnnet.h"

namespace tarnnet {

// A generic record of the read in progress, held by nobody; null when memory is short.
tarnnetif_info* new_record(const char* name, uint32_t veid);

// A copy with a name and container of its own, held by nobody; null when memory is short.
tarnnetif_info* copy_record(const tarnnetif_info* source, const char* name, uint32_t veid);

// Frees a record that is in no list and no index; null is allowed.
void free_record(tarnnetif_info* record);

// Frees and empties what belongs to the record's present kind.
void clear_kind_data(tarnnetif_info* record);

}  // namespace tarnnet
