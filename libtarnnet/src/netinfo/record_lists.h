// The lists that records are kept in, for the record operations alone.
#pragma once

#include "tarnnet.h"

// Puts a record that is in no list at the head of one.
void push_record(struct tarnnetif_info** head, struct tarnnetif_info* record);

// Takes a record out of the list of that head.
void unlink_record(struct tarnnetif_info** head, struct tarnnetif_info* record);

// Ends a record that is in no index and no list: frees it, or marks it as junk and keeps it in the
// trash list for those who hold it.
void discard_record(struct tarnnetif_info* record);
