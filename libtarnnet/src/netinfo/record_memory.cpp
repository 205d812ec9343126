#include "netinfo/record_memory.h"

#include <stdlib.h>
#include <string.h>

#include "netinfo/record_state.h"
#include "strarr.h"
#include "text.h"

namespace tarnnet {

namespace {

bool copy_list(char*** to, char* const* from) {
    *to = dup_strarr(from);
    return from == nullptr || *to != nullptr;
}

bool copy_origin_name(tarnnetif_info* to, const tarnnetif_info* from) {
    if (strcmp(from->origin_name, from->name) == 0) {
        return true;
    }
    char* copy = strdup(from->origin_name);
    if (copy != nullptr) {
        to->origin_name = copy;
    }
    return copy != nullptr;
}

bool copy_kind_data(tarnnetif_info* to, const tarnnetif_info* from) {
    to->type = from->type;
    if (from->type == IFT_VETH) {
        to->data.veth.peer_veid = from->data.veth.peer_veid;
        return copy_text(&to->data.veth.peer_name, from->data.veth.peer_name);
    }
    if (from->type == IFT_VLAN) {
        to->data.vlan.vlan_id = from->data.vlan.vlan_id;
        return copy_text(&to->data.vlan.vlan_master, from->data.vlan.vlan_master);
    }
    return true;
}

void copy_numbers(tarnnetif_info* to, const tarnnetif_info* from) {
    to->set_mask = from->set_mask;
    to->state = from->state;
    to->link_flags = from->link_flags;
    to->generation = from->generation;
    to->addr_generation = from->addr_generation;
    to->conf_addr_generation = from->conf_addr_generation;
    to->origin = from->origin;
}

}  // namespace

tarnnetif_info* new_record(const char* name, uint32_t veid) {
    auto* record = static_cast<tarnnetif_info*>(calloc(1, sizeof(tarnnetif_info)));
    if (record == nullptr) {
        return nullptr;
    }
    record->name = strdup(name);
    if (record->name == nullptr) {
        free(record);
        return nullptr;
    }
    record->origin_name = record->name;  // the very same string, to be freed once
    record->set_mask = IFU_NAME | IFU_VEID;
    record->type = IFT_GENERIC;
    record->veid = veid;
    record->generation = netinfo.next_generation;
    // No list was emptied yet, in whatever generation.
    record->addr_generation = junk_generation;
    record->conf_addr_generation = junk_generation;
    record->origin = netinfo.cur_origin;
    return record;
}

tarnnetif_info* copy_record(const tarnnetif_info* source, const char* name, uint32_t veid) {
    tarnnetif_info* copy = new_record(name, veid);
    if (copy == nullptr) {
        return nullptr;
    }
    copy_numbers(copy, source);
    if (!copy_origin_name(copy, source) || !copy_text(&copy->bridge, source->bridge) ||
        !copy_text(&copy->network_id, source->network_id) ||
        !copy_text(&copy->hwaddr, source->hwaddr) ||
        !copy_list(&copy->addresses, source->addresses) ||
        !copy_list(&copy->conf_addresses, source->conf_addresses) ||
        !copy_kind_data(copy, source)) {
        free_record(copy);
        return nullptr;
    }
    return copy;
}

void clear_kind_data(tarnnetif_info* record) {
    if (record->type == IFT_VETH) {
        free(record->data.veth.peer_name);
    } else if (record->type == IFT_VLAN) {
        free(record->data.vlan.vlan_master);
    }
    memset(&record->data, 0, sizeof(record->data));
}

void free_record(tarnnetif_info* record) {
    if (record == nullptr) {
        return;
    }
    clear_kind_data(record);
    if (record->origin_name != record->name) {
        free(record->origin_name);
    }
    free(record->name);
    free(record->bridge);
    free(record->network_id);
    free(record->hwaddr);
    free_strarr(record->addresses);
    free_strarr(record->conf_addresses);
    free(record);
}

}  // namespace tarnnet
