// Filters, and the results that callers hold.
#include <stddef.h>
#include <stdlib.h>
#include <string.h>

#include "netinfo/records.h"
#include "state.h"
#include "tarnnet.h"
#include "text.h"

namespace tarnnet {

namespace {

constexpr size_t first_room = 16;  // pointers, the terminating one included

bool matches_text(const char* wanted, const char* field) {
    return wanted == nullptr || (field != nullptr && strcmp(wanted, field) == 0);
}

bool matches(const tarnnet_filter* filter, const tarnnetif_info* record) {
    return filter == nullptr ||
           (filter->min_veid <= record->veid && record->veid <= filter->max_veid &&
            (record->type & filter->type_mask) != 0 &&
            matches_text(filter->bridge, record->bridge) &&
            matches_text(filter->network_id, record->network_id) &&
            matches_text(filter->name, record->name));
}

tarnnet_info* new_result() {
    auto* result = static_cast<tarnnet_info*>(calloc(1, sizeof(tarnnet_info)));
    if (result == nullptr) {
        return nullptr;
    }
    result->records = static_cast<tarnnetif_info**>(calloc(first_room, sizeof(void*)));
    if (result->records == nullptr) {
        free(result);
        return nullptr;
    }
    return result;
}

// Doubles the room once the entries and the terminating null reach it.
int keep_room(tarnnet_info* result, size_t count, size_t* room) {
    if (count + 1 < *room) {
        return 0;
    }
    auto* grown =
        static_cast<tarnnetif_info**>(realloc(result->records, 2 * *room * sizeof(void*)));
    if (grown == nullptr) {
        return -1;
    }
    result->records = grown;
    *room *= 2;
    return 0;
}

}  // namespace

tarnnet_info* get_cached_info(const tarnnet_filter* filter) {
    tarnnet_info* result = new_result();
    if (result == nullptr) {
        return nullptr;
    }
    size_t count = 0;
    size_t room = first_room;
    for (tarnnetif_info* record = netinfo.active; record != nullptr; record = record->next) {
        if (!matches(filter, record)) {
            continue;
        }
        record->refcount++;  // from here on an update makes a copy
        result->records[count++] = record;
        result->records[count] = nullptr;
        if (keep_room(result, count, &room) != 0) {
            tarnnet_release_info_SL(result);
            return nullptr;
        }
    }
    return result;
}

}  // namespace tarnnet

void tarnnet_release_info_SL(tarnnet_info* result) {
    if (result == nullptr) {
        return;
    }
    for (tarnnetif_info** record = result->records; *record != nullptr; ++record) {
        tarnnet::unref_tarnnetif_info(*record);
    }
    free(result->records);
    free(result);
}

tarnnet_filter* tarnnet_get_simple_filter(uint32_t type_mask, const char* bridge,
                                          const char* network_id, const char* name,
                                          uint32_t min_veid, uint32_t max_veid) {
    if (tarnnet::init_libtarnnet_state() != 0) {
        return nullptr;
    }
    auto* filter = static_cast<tarnnet_filter*>(calloc(1, sizeof(tarnnet_filter)));
    if (filter == nullptr) {
        return nullptr;
    }
    filter->type_mask = type_mask;
    filter->min_veid = min_veid;
    filter->max_veid = max_veid;
    if (!tarnnet::copy_text(&filter->bridge, bridge) ||
        !tarnnet::copy_text(&filter->network_id, network_id) ||
        !tarnnet::copy_text(&filter->name, name)) {
        tarnnet_release_filter(filter);
        return nullptr;
    }
    return filter;
}

void tarnnet_release_filter(tarnnet_filter* filter) {
    if (filter == nullptr) {
        return;
    }
    free(filter->bridge);
    free(filter->network_id);
    free(filter->name);
    free(filter);
}
