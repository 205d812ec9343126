#include "netinfo/index.h"

#include <search.h>
#include <stdlib.h>
#include <string.h>

#include "kind_slots.h"

namespace tarnnet {

namespace {

struct network_node {
    char* network_id;
    container_level level;
};

int compare_names(const void* a, const void* b) {
    return strcmp(static_cast<const tarnnetif_info*>(a)->name,
                  static_cast<const tarnnetif_info*>(b)->name);
}

int compare_containers(const void* a, const void* b) {
    const uint32_t left = static_cast<const container_node*>(a)->veid;
    const uint32_t right = static_cast<const container_node*>(b)->veid;
    return left < right ? -1 : (left > right ? 1 : 0);
}

int compare_networks(const void* a, const void* b) {
    return strcmp(static_cast<const network_node*>(a)->network_id,
                  static_cast<const network_node*>(b)->network_id);
}

using compare_fn = int (*)(const void* a, const void* b);

// The item in a tree, or null. A tree's node begins with the pointer to its item.
void* item_of(void* const* root, const void* probe, compare_fn compare) {
    void** place = static_cast<void**>(tfind(probe, root, compare));
    return place == nullptr ? nullptr : *place;
}

// Adds an item; -1 when memory is short or another item has the place.
int add_item(void** root, void* item, compare_fn compare) {
    void** place = static_cast<void**>(tsearch(item, root, compare));
    return place != nullptr && *place == item ? 0 : -1;
}

tarnnetif_info** find_place(const container_node* node, const char* name) {
    tarnnetif_info probe = {};
    probe.name = const_cast<char*>(name);  // the search only reads it
    return static_cast<tarnnetif_info**>(tfind(&probe, &node->names, compare_names));
}

container_node* find_container(container_level* level, uint32_t veid) {
    // Nearly every record is the host's, and a container's come one after the other.
    if (veid == 0) {
        return &level->host;
    }
    if (level->cached == nullptr || level->cached->veid != veid) {
        const container_node probe = {veid, nullptr};
        level->cached =
            static_cast<container_node*>(item_of(&level->containers, &probe, compare_containers));
    }
    return level->cached;
}

container_node* obtain_container(container_level* level, uint32_t veid) {
    container_node* node = find_container(level, veid);
    if (node != nullptr) {
        return node;
    }
    node = static_cast<container_node*>(calloc(1, sizeof(container_node)));
    if (node == nullptr) {
        return nullptr;
    }
    node->veid = veid;
    if (add_item(&level->containers, node, compare_containers) != 0) {
        free(node);
        return nullptr;
    }
    level->cached = node;
    return node;
}

void drop_container_if_empty(container_level* level, container_node* node) {
    if (node->names != nullptr || node == &level->host) {
        return;
    }
    level->cached = nullptr;  // may be this very node
    tdelete(node, &level->containers, compare_containers);
    free(node);
}

bool level_is_empty(const container_level* level) {
    return level->containers == nullptr && level->host.names == nullptr;
}

int level_insert(container_level* level, tarnnetif_info* record) {
    container_node* node = obtain_container(level, record->veid);
    if (node == nullptr) {
        return -1;
    }
    const int result = add_item(&node->names, record, compare_names);
    // After a failure the node may be new, and empty.
    drop_container_if_empty(level, node);
    return result;
}

tarnnetif_info** level_place(container_level* level, const char* name, uint32_t veid) {
    const container_node* node = find_container(level, veid);
    return node == nullptr ? nullptr : find_place(node, name);
}

void level_remove(container_level* level, const tarnnetif_info* record) {
    container_node* node = find_container(level, record->veid);
    tarnnetif_info** place = node == nullptr ? nullptr : find_place(node, record->name);
    if (place == nullptr || *place != record) {
        return;
    }
    tdelete(record, &node->names, compare_names);
    drop_container_if_empty(level, node);
}

void level_replace(container_level* level, const tarnnetif_info* record, tarnnetif_info* other) {
    tarnnetif_info** place = level_place(level, record->name, record->veid);
    if (place != nullptr && *place == record) {
        *place = other;
    }
}

network_node* find_network(const kind_slot* slot, const char* network_id) {
    network_node probe = {};
    probe.network_id = const_cast<char*>(network_id);  // the search only reads it
    return static_cast<network_node*>(item_of(&slot->networks, &probe, compare_networks));
}

void free_network(network_node* network) {
    free(network->network_id);
    free(network);
}

network_node* obtain_network(kind_slot* slot, const char* network_id) {
    network_node* network = find_network(slot, network_id);
    if (network != nullptr) {
        return network;
    }
    network = static_cast<network_node*>(calloc(1, sizeof(network_node)));
    if (network == nullptr) {
        return nullptr;
    }
    network->network_id = strdup(network_id);
    if (network->network_id == nullptr ||
        add_item(&slot->networks, network, compare_networks) != 0) {
        free_network(network);
        return nullptr;
    }
    return network;
}

void drop_network_if_empty(kind_slot* slot, network_node* network) {
    if (!level_is_empty(&network->level)) {
        return;
    }
    tdelete(network, &slot->networks, compare_networks);
    free_network(network);
}

// The records are not the index's.
void keep_record(void* /*record*/) {}

void destroy_container(void* node) {
    tdestroy(static_cast<container_node*>(node)->names, keep_record);
    free(node);
}

void clear_level(container_level* level) {
    tdestroy(level->host.names, keep_record);
    tdestroy(level->containers, destroy_container);
    *level = {};
}

void destroy_network(void* node) {
    auto* network = static_cast<network_node*>(node);
    clear_level(&network->level);
    free_network(network);
}

}  // namespace

int network_index_insert(tarnnetif_info* record, uint32_t kind, const char* network_id) {
    kind_slot* slot = slot_of(kind);
    network_node* network = slot == nullptr ? nullptr : obtain_network(slot, network_id);
    if (network == nullptr) {
        return -1;
    }
    const int result = level_insert(&network->level, record);
    drop_network_if_empty(slot, network);
    return result;
}

void network_index_remove(const tarnnetif_info* record, uint32_t kind, const char* network_id) {
    kind_slot* slot = slot_of(kind);
    network_node* network = slot == nullptr ? nullptr : find_network(slot, network_id);
    if (network == nullptr) {
        return;
    }
    level_remove(&network->level, record);
    drop_network_if_empty(slot, network);
}

int index_insert(tarnnetif_info* record, uint32_t kind, const char* network_id) {
    kind_slot* slot = slot_of(kind);
    if (slot == nullptr || level_insert(&slot->level, record) != 0) {
        return -1;
    }
    if (network_id != nullptr && network_index_insert(record, kind, network_id) != 0) {
        level_remove(&slot->level, record);
        return -1;
    }
    return 0;
}

void index_remove(const tarnnetif_info* record, uint32_t kind, const char* network_id) {
    kind_slot* slot = slot_of(kind);
    if (slot == nullptr) {
        return;
    }
    level_remove(&slot->level, record);
    if (network_id != nullptr) {
        network_index_remove(record, kind, network_id);
    }
}

void index_clear() {
    for (kind_slot& slot : kind_slots) {
        clear_level(&slot.level);
        tdestroy(slot.networks, destroy_network);
        slot.networks = nullptr;
    }
}

void index_replace(const tarnnetif_info* record, tarnnetif_info* other) {
    kind_slot* slot = slot_of(record->type);
    if (slot == nullptr) {
        return;
    }
    level_replace(&slot->level, record, other);
    if (record->network_id == nullptr) {
        return;
    }
    network_node* network = find_network(slot, record->network_id);
    if (network != nullptr) {
        level_replace(&network->level, record, other);
    }
}

tarnnetif_info* index_find(const char* name, uint32_t veid, uint32_t kind) {
    kind_slot* slot = slot_of(kind);
    tarnnetif_info** place = slot == nullptr ? nullptr : level_place(&slot->level, name, veid);
    return place == nullptr ? nullptr : *place;
}

tarnnetif_info* network_index_find(const char* network_id, const char* name, uint32_t veid,
                                   uint32_t kind) {
    kind_slot* slot = slot_of(kind);
    network_node* network = slot == nullptr ? nullptr : find_network(slot, network_id);
    tarnnetif_info** place =
        network == nullptr ? nullptr : level_place(&network->level, name, veid);
    return place == nullptr ? nullptr : *place;
}

}  // namespace tarnnet
