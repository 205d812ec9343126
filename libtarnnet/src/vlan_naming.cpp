#include "vlan_naming.h"

#include <stdio.h>
#include <string.h>

namespace {

int g_style = VLAN_RAW_NO_PAD;

struct naming_word {
    const char* word;
    int style;
};

constexpr naming_word words[] = {
    {"VLAN_NAME_TYPE_PLUS_VID", VLAN_PLUS_VID},
    {"VLAN_NAME_TYPE_RAW_PLUS_VID", VLAN_RAW_PLUS_VID},
    {"VLAN_NAME_TYPE_PLUS_VID_NO_PAD", VLAN_PLUS_VID_NO_PAD},
};

}  // namespace

void set_vlan_naming(const char* word) {
    if (word == nullptr) {
        return;
    }
    g_style = VLAN_RAW_NO_PAD;
    for (const naming_word& known : words) {
        if (strcmp(word, known.word) == 0) {
            g_style = known.style;
        }
    }
}

int vlan_naming() {
    return g_style;
}

void vlan_device_name(char name[if_name_size], int style, const char* device, uint32_t vlan_id) {
    switch (style) {
        case VLAN_PLUS_VID:
            snprintf(name, if_name_size, "vlan%.4u", vlan_id);
            break;
        case VLAN_RAW_PLUS_VID:
            snprintf(name, if_name_size, "%s.%.4u", device, vlan_id);
            break;
        case VLAN_PLUS_VID_NO_PAD:
            snprintf(name, if_name_size, "vlan%u", vlan_id);
            break;
        case VLAN_RAW_NO_PAD:
            snprintf(name, if_name_size, "%s.%u", device, vlan_id);
            break;
        default:
            snprintf(name, if_name_size, "none.%.4u", vlan_id);
            break;
    }
}
