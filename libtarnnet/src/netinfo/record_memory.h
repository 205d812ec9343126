// The memory of one record: making, copying, freeing. Lists and indexes are no matter here.
#pragma once

#include <stdint.h>

#include "tarnnet.h"

// A generic record of the read in progress, held by nobody; NULL when memory is short.
struct tarnnetif_info* new_record(const char* name, uint32_t veid);

// A copy with a name and container of its own, held by nobody; NULL when memory is short.
struct tarnnetif_info* copy_record(const struct tarnnetif_info* source, const char* name,
                                   uint32_t veid);

// Frees a record that is in no list and no index; NULL is allowed.
void free_record(struct tarnnetif_info* record);

// Frees and empties what belongs to the record's present kind.
void clear_kind_data(struct tarnnetif_info* record);
