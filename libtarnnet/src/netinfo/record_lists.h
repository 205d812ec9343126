// The lists that records are kept in, for the record operations alone.
#pragma once

#include "tarnnet.h"

namespace tarnnet {

// Puts a record that is in no list at the head of one.
void push_record(tarnnetif_info** head, tarnnetif_info* record);

// Takes a record out of the list of that head.
void unlink_record(tarnnetif_info** head, tarnnetif_info* record);

// Ends a record that is in no index and no list: frees it, or marks it as junk and keeps it in the
// trash list for those who hold it.
void discard_record(tarnnetif_info* record);

}  // namespace tarnnet
