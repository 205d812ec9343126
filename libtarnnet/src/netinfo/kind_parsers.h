// The line formats of the files that tell of an interface's kind. Pure; each takes its line apart
// in place, and what it returns points into the line.
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace tarnnet {

// Cuts a line at runs of the separators; fields beyond `most` are left out. The number of fields.
size_t split_fields(char* line, const char* separators, char** fields, size_t most);

// Whether the first line of a pair-device file names the one version that is understood.
bool is_known_version(char* line);

struct veth_line {
    const char* host_name;
    const char* container_name;
    uint32_t veid;
};

struct vlan_line {
    const char* name;
    uint32_t vlan_id;
    const char* master;
};

// False for a line with fields missing.
bool parse_veth_line(char* line, veth_line* parsed);
bool parse_vlan_line(char* line, vlan_line* parsed);

// The first field of a line, or null.
const char* parse_vmth_line(char* line);

// The word of the line that gives the VLAN naming style, or null when it is another line.
const char* parse_vlan_naming_line(char* line);

}  // namespace tarnnet
