// Updates of a record: in place when nobody holds it, on a copy otherwise.
#include <stddef.h>
#include <stdlib.h>
#include <string.h>

#include "fatal.h"
#include "netinfo/index.h"
#include "netinfo/record_lists.h"
#include "netinfo/record_memory.h"
#include "netinfo/records.h"
#include "strarr.h"

namespace tarnnet {

namespace {

// The order in which a name is looked up: of several records of one name the first one is meant.
constexpr uint32_t lookup_order[] = {IFT_ETHERNET, IFT_BRIDGE, IFT_VETH,
                                     IFT_VLAN,     IFT_VNIC,   IFT_GENERIC};

bool is_list(uint32_t code) {
    return code == IFU_ADDRESSES || code == IFU_CONF_ADDRESSES;
}

// The number that a code stands for, or null when the record has none such.
uint32_t* number_field(tarnnetif_info* record, uint32_t code) {
    switch (code) {
        case IFU_TYPE:
            return &record->type;
        case IFU_STATE:
            return &record->state;
        case IFU_LINK_FLAGS:
            return &record->link_flags;
        case IFU_PEER_VEID:
        case IFU_PEER_VEID_2:
            return record->type == IFT_VETH ? &record->data.veth.peer_veid : nullptr;
        case IFU_VLAN_ID:
            return record->type == IFT_VLAN ? &record->data.vlan.vlan_id : nullptr;
        default:
            return nullptr;
    }
}

// The text that a code stands for, or null when the record has none such.
char** text_field(tarnnetif_info* record, uint32_t code) {
    switch (code) {
        case IFU_ORIGIN_NAME:
            return &record->origin_name;
        case IFU_HWADDR:
            return &record->hwaddr;
        case IFU_BRIDGE:
            return &record->bridge;
        case IFU_NETWORK_ID:
            return &record->network_id;
        case IFU_PEER_NAME:
            return record->type == IFT_VETH ? &record->data.veth.peer_name : nullptr;
        case IFU_VLAN_MASTER:
            return record->type == IFT_VLAN ? &record->data.vlan.vlan_master : nullptr;
        default:
            return nullptr;
    }
}

bool fits_record(tarnnetif_info* record, uint32_t code) {
    return code == 0 || is_list(code) || number_field(record, code) != nullptr ||
           text_field(record, code) != nullptr;
}

// What is absent on both sides is the same for two of the codes only.
bool same_text(uint32_t code, const char* stored, const char* text) {
    if (stored == nullptr && text == nullptr) {
        return code == IFU_BRIDGE || code == IFU_NETWORK_ID;
    }
    return stored != nullptr && text != nullptr && strcmp(stored, text) == 0;
}

// Whether the update would change nothing. A list always changes.
bool equals_stored(tarnnetif_info* record, uint32_t code, if_value value) {
    if (code == 0) {
        return true;
    }
    const uint32_t* number = number_field(record, code);
    if (number != nullptr) {
        return *number == value.number;
    }
    char* const* text = text_field(record, code);
    return text != nullptr && same_text(code, *text, value.text);
}

// Such a one counts as another interface of that name: it gets a record of its own, at the head of
// the list, even when nobody holds the old one.
bool leaves_special_kind(const tarnnetif_info* record, uint32_t code, if_value value) {
    const bool special =
        record->type == IFT_BRIDGE || record->type == IFT_VLAN || record->type == IFT_VETH;
    return code == IFU_TYPE && special && record->type != value.number;
}

int change_kind(tarnnetif_info* record, uint32_t kind) {
    if (record->type == kind) {
        return 0;
    }
    // Into the new place before out of the old one: without memory nothing has changed.
    if (index_insert(record, kind, record->network_id) != 0) {
        return -1;
    }
    index_remove(record, record->type, record->network_id);
    clear_kind_data(record);
    record->type = kind;
    return 0;
}

// Takes over `network_id`, a heap string or null, unless it fails.
int change_network(tarnnetif_info* record, char* network_id) {
    if (!same_text(IFU_NETWORK_ID, record->network_id, network_id)) {
        if (network_id != nullptr && network_index_insert(record, record->type, network_id) != 0) {
            return -1;
        }
        if (record->network_id != nullptr) {
            network_index_remove(record, record->type, record->network_id);
        }
    }
    free(record->network_id);
    record->network_id = network_id;
    return 0;
}

void change_origin_name(tarnnetif_info* record, char* origin_name) {
    if (record->origin_name != record->name) {
        free(record->origin_name);
    }
    record->origin_name = origin_name != nullptr ? origin_name : record->name;
}

// The value is copied first: it may be the very text that it replaces.
int change_text(tarnnetif_info* record, uint32_t code, const char* text) {
    char* copy = text == nullptr ? nullptr : strdup(text);
    if (text != nullptr && copy == nullptr) {
        return -1;
    }
    if (code == IFU_NETWORK_ID) {
        if (change_network(record, copy) != 0) {
            free(copy);
            return -1;
        }
    } else if (code == IFU_ORIGIN_NAME) {
        change_origin_name(record, copy);
    } else {
        char** field = text_field(record, code);
        free(*field);
        *field = copy;
    }
    return 0;
}

// Appends the blank-separated pieces of a text, to an emptied list when it is of an older
// generation. So a text without pieces empties the list of the read before.
int append_pieces(char*** list, int32_t* list_generation, const char* text) {
    char* copy = strdup(text == nullptr ? "" : text);
    if (copy == nullptr) {
        return -1;
    }
    if (*list_generation != netinfo.next_generation) {
        free_strarr(*list);
        *list = nullptr;
        *list_generation = netinfo.next_generation;
    }
    int result = 0;
    char* rest = nullptr;
    for (char* piece = strtok_r(copy, " ", &rest); piece != nullptr && result == 0;
         piece = strtok_r(nullptr, " ", &rest)) {
        result = add_to_strarr(list, piece);
    }
    free(copy);
    return result;
}

int change_list(tarnnetif_info* record, uint32_t code, const char* text) {
    return code == IFU_ADDRESSES
               ? append_pieces(&record->addresses, &record->addr_generation, text)
               : append_pieces(&record->conf_addresses, &record->conf_addr_generation, text);
}

int store_value(tarnnetif_info* record, uint32_t code, if_value value) {
    if (code == 0) {
        return 0;
    }
    if (is_list(code)) {
        return change_list(record, code, value.text);
    }
    if (code == IFU_TYPE) {
        return change_kind(record, value.number);
    }
    uint32_t* number = number_field(record, code);
    if (number == nullptr) {
        return change_text(record, code, value.text);
    }
    *number = value.number;
    return 0;
}

tarnnetif_info* apply_update(tarnnetif_info* record, uint32_t code, if_value value) {
    if (store_value(record, code, value) != 0) {
        return nullptr;
    }
    record->set_mask |= code;
    record->generation = netinfo.next_generation;
    return record;
}

// Puts a copy in a record's place, at the head of the active list, and junks the record. null when
// memory is short: the record stays then.
tarnnetif_info* replace_record(tarnnetif_info* record) {
    tarnnetif_info* copy = copy_record(record, record->name, record->veid);
    if (copy == nullptr) {
        return nullptr;
    }
    index_replace(record, copy);
    unlink_record(&netinfo.active, record);
    push_record(&netinfo.active, copy);
    discard_record(record);
    return copy;
}

tarnnetif_info* find_of_any_kind(const char* name, uint32_t veid) {
    for (uint32_t kind : lookup_order) {
        tarnnetif_info* record = find_tarnnetif_info(name, veid, kind);
        if (record != nullptr) {
            return record;
        }
    }
    return nullptr;
}

tarnnetif_info* update_record(tarnnetif_info* record, uint32_t code, if_value value) {
    if (!fits_record(record, code)) {
        return nullptr;
    }
    if (record->refcount == 0 && !leaves_special_kind(record, code, value)) {
        return apply_update(record, code, value);
    }
    record->generation = netinfo.next_generation;  // touched, whatever comes of it
    if (equals_stored(record, code, value)) {
        return record;
    }
    record = replace_record(record);
    return record == nullptr ? nullptr : apply_update(record, code, value);
}

tarnnetif_info* raw_update_tarnnetif_info(tarnnetif_info* record, const char* name, uint32_t veid,
                                          uint32_t code, if_value value) {
    fatal_unless(code != IFU_NAME && code != IFU_VEID, "a record's name and container are fixed");
    if (record == nullptr) {
        record = find_of_any_kind(name, veid);
    }
    if (record == nullptr) {
        record = create_tarnnetif_info(name, veid, nullptr);
    }
    netinfo.last_ib = record == nullptr ? nullptr : update_record(record, code, value);
    return netinfo.last_ib;
}

}  // namespace

tarnnetif_info* update_tarnnetif_info(const char* name, uint32_t veid, uint32_t code,
                                      if_value value) {
    return raw_update_tarnnetif_info(nullptr, name, veid, code, value);
}

tarnnetif_info* update_tarnnetif_info_by_ptr(tarnnetif_info* record, uint32_t code,
                                             if_value value) {
    const bool replaced = record->generation == junk_generation;
    return raw_update_tarnnetif_info(replaced ? nullptr : record, record->name, record->veid, code,
                                     value);
}

tarnnetif_info* update_last_tarnnetif_info(uint32_t code, if_value value) {
    fatal_unless(netinfo.last_ib != nullptr, "there is a record that was touched last");
    return raw_update_tarnnetif_info(netinfo.last_ib, nullptr, 0, code, value);
}

}  // namespace tarnnet
