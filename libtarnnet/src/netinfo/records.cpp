#include "netinfo/records.h"

#include "netinfo/index.h"
#include "netinfo/record_lists.h"
#include "netinfo/record_memory.h"

namespace tarnnet {

void use_origin(uint32_t veid, uint32_t source) {
    netinfo.cur_origin.veid = veid;
    netinfo.cur_origin.source = source;
    // Negative ones are no generations: the one is junk.
    netinfo.next_generation =
        netinfo.next_generation == INT32_MAX ? 0 : netinfo.next_generation + 1;
}

tarnnetif_info* create_tarnnetif_info(const char* name, uint32_t veid,
                                      const tarnnetif_info* source) {
    tarnnetif_info* record =
        source == nullptr ? new_record(name, veid) : copy_record(source, name, veid);
    if (record == nullptr) {
        return nullptr;
    }
    if (index_insert(record, record->type, record->network_id) != 0) {
        free_record(record);
        return nullptr;
    }
    push_record(&netinfo.active, record);
    return record;
}

tarnnetif_info* find_tarnnetif_info(const char* name, uint32_t veid, uint32_t kind) {
    return index_find(name, veid, kind);
}

void junk_tarnnetif_info(tarnnetif_info* record) {
    index_remove(record, record->type, record->network_id);
    unlink_record(&netinfo.active, record);
    discard_record(record);
}

void unref_tarnnetif_info(tarnnetif_info* record) {
    record->refcount--;
    if (record->refcount == 0 && record->generation == junk_generation) {
        unlink_record(&netinfo.trash, record);
        free_record(record);
    }
}

void purge_old_generations() {
    tarnnetif_info* next = nullptr;
    for (tarnnetif_info* record = netinfo.active; record != nullptr; record = next) {
        next = record->next;
        if (record->origin.veid == netinfo.cur_origin.veid &&
            record->origin.source == netinfo.cur_origin.source &&
            record->generation != netinfo.next_generation) {
            junk_tarnnetif_info(record);
        }
    }
}

void purge_all_generations() {
    index_clear();  // all at once, so the records are not looked up one by one
    while (netinfo.active != nullptr) {
        tarnnetif_info* record = netinfo.active;
        unlink_record(&netinfo.active, record);
        discard_record(record);
    }
}

}  // namespace tarnnet
