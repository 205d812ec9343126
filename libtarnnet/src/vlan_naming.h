// How VLAN device names are made from the underlying device and the VLAN number. The kernel's
// naming scheme is remembered for the process.
#pragma once

#include <stddef.h>
#include <stdint.h>

constexpr size_t if_name_size = 16;  // 15 characters and the NUL

enum vlan_naming_style {
    VLAN_PLUS_VID = 0,         // vlan0005
    VLAN_RAW_PLUS_VID = 1,     // eth0.0005
    VLAN_PLUS_VID_NO_PAD = 2,  // vlan5
    VLAN_RAW_NO_PAD = 3,       // eth0.5
};

// Remembers the style named by `word`, the scheme's name in /proc/net/vlan/config. A word that is
// not known means VLAN_RAW_NO_PAD; no word (null) keeps the style.
void set_vlan_naming(const char* word);

// The style in force, VLAN_RAW_NO_PAD at first.
int vlan_naming();

// Writes the device name in `style`, cut to 15 characters, into `name`.
void vlan_device_name(char name[if_name_size], int style, const char* device, uint32_t vlan_id);
