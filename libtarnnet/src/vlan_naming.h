// How VLAN device names are made from the underlying device and the VLAN number.
#pragma once

#include <stdint.h>

#include "if_name.h"

namespace tarnnet {

enum vlan_naming_style {
    VLAN_PLUS_VID = 0,         // vlan0005
    VLAN_RAW_PLUS_VID = 1,     // eth0.0005
    VLAN_PLUS_VID_NO_PAD = 2,  // vlan5
    VLAN_RAW_NO_PAD = 3,       // eth0.5
};

// The style of that name in /proc/net/vlan/config; VLAN_RAW_NO_PAD for a word that is not known.
vlan_naming_style style_of_word(const char* word);

// Writes the device name in `style`, cut to 15 characters, into `name`. The style is a number, as
// it may be none of those above.
void vlan_device_name(char name[if_name_size], int style, const char* device, uint32_t vlan_id);

}  // namespace tarnnet
