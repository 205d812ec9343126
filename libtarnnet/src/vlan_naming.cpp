#include "vlan_naming.h"

#include <stdio.h>
#include <string.h>

namespace tarnnet {

vlan_naming_style style_of_word(const char* word) {
    constexpr const char* words[] = {"VLAN_NAME_TYPE_PLUS_VID", "VLAN_NAME_TYPE_RAW_PLUS_VID",
                                     "VLAN_NAME_TYPE_PLUS_VID_NO_PAD"};
    int style = VLAN_PLUS_VID;
    while (style < VLAN_RAW_NO_PAD && strcmp(word, words[style]) != 0) {
        ++style;
    }
    return static_cast<vlan_naming_style>(style);
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

}  // namespace tarnnet
