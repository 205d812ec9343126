// The roots of the indexes of the records, one slot for each IFT_ kind: a part of the library's
// state. Which trees hang below them, and what is found there, is netinfo/index's.
#pragma once

#include <stdint.h>

namespace tarnnet {

// The records of one container, a tree by name.
struct container_node {
    uint32_t veid;
    void* names;
};

// The containers of one kind, or of one kind within a network. The host has a node of its own
// beside the tree; `cached` is the container found last.
struct container_level {
    void* containers;
    container_node host;
    container_node* cached;
};

struct kind_slot {
    uint32_t stamp;  // written at the start, read by nobody
    container_level level;
    void* networks;
};

constexpr uint32_t kind_count = 6;
extern kind_slot kind_slots[kind_count];

// The slot of a kind, or null when it is not one kind.
kind_slot* slot_of(uint32_t kind);

// Marks the slots of kinds at the library's start: all but those of VLANs and virtual NICs.
void stamp_kind_slots();

}  // namespace tarnnet
