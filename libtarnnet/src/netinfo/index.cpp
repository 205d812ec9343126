#include "netinfo/index.h"

#include <search.h>
#include <stdlib.h>
#include <string.h>

namespace {

// The records of one container, a tree by name.
struct container_node {
    uint32_t veid;
    void* names;
};

// The containers of one kind, or of one kind within a network. The host has a node of its own
// beside the tree; `cached` is the container found last.
struct container_level {
    void* containers;
    struct container_node host;
    struct container_node* cached;
};

struct network_node {
    char* network_id;
    struct container_level level;
};

struct kind_slot {
    uint32_t stamp;
    struct container_level level;
    void* networks;
};

enum { KIND_COUNT = 6 };
struct kind_slot slots[KIND_COUNT];

struct kind_slot* slot_of(uint32_t kind) {
    for (uint32_t bit = 0; bit < KIND_COUNT; ++bit) {
        if (kind == 1u << bit) {
            return &slots[bit];
        }
    }
    return nullptr;
}

int compare_names(const void* a, const void* b) {
    return strcmp(static_cast<const struct tarnnetif_info*>(a)->name,
                  static_cast<const struct tarnnetif_info*>(b)->name);
}

int compare_containers(const void* a, const void* b) {
    const uint32_t left = static_cast<const struct container_node*>(a)->veid;
    const uint32_t right = static_cast<const struct container_node*>(b)->veid;
    return left < right ? -1 : (left > right ? 1 : 0);
}

int compare_networks(const void* a, const void* b) {
    return strcmp(static_cast<const struct network_node*>(a)->network_id,
                  static_cast<const struct network_node*>(b)->network_id);
}

typedef int (*compare_fn)(const void* a, const void* b);

// The place of an item in a tree, or NULL. A tree's node begins with the pointer to its item.
template <class Item>
Item** place_of(void* const* root, const Item* probe, compare_fn compare) {
    return static_cast<Item**>(tfind(probe, root, compare));
}

template <class Item>
Item* item_of(void* const* root, const Item* probe, compare_fn compare) {
    Item** place = place_of(root, probe, compare);
    return place == nullptr ? nullptr : *place;
}

// Adds an item; -1 when memory is short or another item has the place.
template <class Item>
int add_item(void** root, Item* item, compare_fn compare) {
    Item** place = static_cast<Item**>(tsearch(item, root, compare));
    return place != nullptr && *place == item ? 0 : -1;
}

struct tarnnetif_info** find_place(const struct container_node* node, const char* name) {
    struct tarnnetif_info probe = {};
    probe.name = const_cast<char*>(name);  // the search only reads it
    return place_of(&node->names, &probe, compare_names);
}

struct container_node* find_container(struct container_level* level, uint32_t veid) {
    if (veid == 0) {
        return &level->host;
    }
    if (level->cached == nullptr || level->cached->veid != veid) {
        const struct container_node probe = {veid, nullptr};
        level->cached = item_of(&level->containers, &probe, compare_containers);
    }
    return level->cached;
}

struct container_node* obtain_container(struct container_level* level, uint32_t veid) {
    struct container_node* node = find_container(level, veid);
    if (node != nullptr) {
        return node;
    }
    node = static_cast<struct container_node*>(calloc(1, sizeof(struct container_node)));
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

void drop_container_if_empty(struct container_level* level, struct container_node* node) {
    if (node->names != nullptr || node == &level->host) {
        return;
    }
    level->cached = nullptr;
    tdelete(node, &level->containers, compare_containers);
    free(node);
}

bool level_is_empty(const struct container_level* level) {
    return level->containers == nullptr && level->host.names == nullptr;
}

int level_insert(struct container_level* level, struct tarnnetif_info* record) {
    struct container_node* node = obtain_container(level, record->veid);
    if (node == nullptr) {
        return -1;
    }
    const int result = add_item(&node->names, record, compare_names);
    drop_container_if_empty(level, node);
    return result;
}

struct tarnnetif_info** level_place(struct container_level* level, const char* name,
                                    uint32_t veid) {
    const struct container_node* node = find_container(level, veid);
    return node == nullptr ? nullptr : find_place(node, name);
}

void level_remove(struct container_level* level, const struct tarnnetif_info* record) {
    struct container_node* node = find_container(level, record->veid);
    struct tarnnetif_info** place = node == nullptr ? nullptr : find_place(node, record->name);
    if (place == nullptr || *place != record) {
        return;
    }
    tdelete(record, &node->names, compare_names);
    drop_container_if_empty(level, node);
}

void level_replace(struct container_level* level, const struct tarnnetif_info* record,
                   struct tarnnetif_info* other) {
    struct tarnnetif_info** place = level_place(level, record->name, record->veid);
    if (place != nullptr && *place == record) {
        *place = other;
    }
}

struct network_node* find_network(const struct kind_slot* slot, const char* network_id) {
    struct network_node probe = {};
    probe.network_id = const_cast<char*>(network_id);  // the search only reads it
    return item_of(&slot->networks, &probe, compare_networks);
}

void free_network(struct network_node* network) {
    free(network->network_id);
    free(network);
}

struct network_node* obtain_network(struct kind_slot* slot, const char* network_id) {
    struct network_node* network = find_network(slot, network_id);
    if (network != nullptr) {
        return network;
    }
    network = static_cast<struct network_node*>(calloc(1, sizeof(struct network_node)));
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

void drop_network_if_empty(struct kind_slot* slot, struct network_node* network) {
    if (!level_is_empty(&network->level)) {
        return;
    }
    tdelete(network, &slot->networks, compare_networks);
    free_network(network);
}

void keep_record(void* /*record*/) {}

void destroy_container(void* node) {
    tdestroy(static_cast<struct container_node*>(node)->names, keep_record);
    free(node);
}

void clear_level(struct container_level* level) {
    tdestroy(level->host.names, keep_record);
    tdestroy(level->containers, destroy_container);
    *level = {};
}

void destroy_network(void* node) {
    auto* network = static_cast<struct network_node*>(node);
    clear_level(&network->level);
    free_network(network);
}

}  // namespace

void stamp_index_slots(void) {
    // Each next kind is 1 shifted by the kind before: 1, 2, 4, 16. The slots of the other two kinds
    // are left as they are, on purpose; nothing depends on the stamp.
    for (uint32_t kind = IFT_GENERIC; kind <= IFT_VETH; kind = 1u << kind) {
        slot_of(kind)->stamp = kind;
    }
}

int network_index_insert(struct tarnnetif_info* record, uint32_t kind, const char* network_id) {
    struct kind_slot* slot = slot_of(kind);
    struct network_node* network = slot == nullptr ? nullptr : obtain_network(slot, network_id);
    if (network == nullptr) {
        return -1;
    }
    const int result = level_insert(&network->level, record);
    drop_network_if_empty(slot, network);
    return result;
}

void network_index_remove(const struct tarnnetif_info* record, uint32_t kind,
                          const char* network_id) {
    struct kind_slot* slot = slot_of(kind);
    struct network_node* network = slot == nullptr ? nullptr : find_network(slot, network_id);
    if (network == nullptr) {
        return;
    }
    level_remove(&network->level, record);
    drop_network_if_empty(slot, network);
}

int index_insert(struct tarnnetif_info* record, uint32_t kind, const char* network_id) {
    struct kind_slot* slot = slot_of(kind);
    if (slot == nullptr || level_insert(&slot->level, record) != 0) {
        return -1;
    }
    if (network_id != nullptr && network_index_insert(record, kind, network_id) != 0) {
        level_remove(&slot->level, record);
        return -1;
    }
    return 0;
}

void index_remove(const struct tarnnetif_info* record, uint32_t kind, const char* network_id) {
    struct kind_slot* slot = slot_of(kind);
    if (slot == nullptr) {
        return;
    }
    level_remove(&slot->level, record);
    if (network_id != nullptr) {
        network_index_remove(record, kind, network_id);
    }
}

void index_clear(void) {
    for (struct kind_slot& slot : slots) {
        clear_level(&slot.level);
        tdestroy(slot.networks, destroy_network);
        slot.networks = nullptr;
    }
}

void index_replace(const struct tarnnetif_info* record, struct tarnnetif_info* other) {
    struct kind_slot* slot = slot_of(record->type);
    if (slot == nullptr) {
        return;
    }
    level_replace(&slot->level, record, other);
    if (record->network_id == nullptr) {
        return;
    }
    struct network_node* network = find_network(slot, record->network_id);
    if (network != nullptr) {
        level_replace(&network->level, record, other);
    }
}

struct tarnnetif_info* index_find(const char* name, uint32_t veid, uint32_t kind) {
    struct kind_slot* slot = slot_of(kind);
    struct tarnnetif_info** place =
        slot == nullptr ? nullptr : level_place(&slot->level, name, veid);
    return place == nullptr ? nullptr : *place;
}

struct tarnnetif_info* network_index_find(const char* network_id, const char* name, uint32_t veid,
                                          uint32_t kind) {
    struct kind_slot* slot = slot_of(kind);
    struct network_node* network = slot == nullptr ? nullptr : find_network(slot, network_id);
    struct tarnnetif_info** place =
        network == nullptr ? nullptr : level_place(&network->level, name, veid);
    return place == nullptr ? nullptr : *place;
}
