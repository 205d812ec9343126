#include "netinfo/record_lists.h"

#include "netinfo/record_memory.h"
#include "netinfo/record_state.h"

namespace tarnnet {

void push_record(tarnnetif_info** head, tarnnetif_info* record) {
    record->prev = nullptr;
    record->next = *head;
    if (*head != nullptr) {
        (*head)->prev = record;
    }
    *head = record;
}

void unlink_record(tarnnetif_info** head, tarnnetif_info* record) {
    if (record->prev != nullptr) {
        record->prev->next = record->next;
    } else {
        *head = record->next;
    }
    if (record->next != nullptr) {
        record->next->prev = record->prev;
    }
    record->prev = nullptr;
    record->next = nullptr;
}

void discard_record(tarnnetif_info* record) {
    // Who updates "the record touched last" must not get one that is gone.
    if (netinfo.last_ib == record) {
        netinfo.last_ib = nullptr;
    }
    if (record->refcount == 0) {
        free_record(record);
        return;
    }
    record->generation = junk_generation;
    push_record(&netinfo.trash, record);
}

}  // namespace tarnnet
