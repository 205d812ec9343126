#include "netinfo/kind_parsers.h"

#include <string.h>

#include "text.h"

namespace tarnnet {

namespace {

// The fields of a line of a pair-device file end with the line, but for the version line.
constexpr char pair_separators[] = " \n";

}  // namespace

// A run of separators counts as one, also at the start of the line.
size_t split_fields(char* line, const char* separators, char** fields, size_t most) {
    size_t count = 0;
    char* rest = nullptr;
    for (char* field = strtok_r(line, separators, &rest); field != nullptr && count < most;
         field = strtok_r(nullptr, separators, &rest)) {
        fields[count++] = field;
    }
    return count;
}

// Version: 1.0
bool is_known_version(char* line) {
    char* fields[3];
    // The line end is part of the version: a line without one is not understood.
    return split_fields(line, " ", fields, 3) == 2 && strcmp(fields[0], "Version:") == 0 &&
           strcmp(fields[1], "1.0\n") == 0;
}

// The two ends of a pair, host first, each as hardware address and name, and the container's id:
// 00:18:51:0C:7A:01         veth101.0 00:18:51:0C:7A:02              eth0        101
bool parse_veth_line(char* line, veth_line* parsed) {
    char* fields[5];
    if (split_fields(line, pair_separators, fields, 5) < 5) {
        return false;
    }
    *parsed = {fields[1], fields[3], decimal(fields[4])};
    return true;
}

// A device of the host, whose other end is not told:
// vme101.0 00:18:51:0C:7A:01
const char* parse_vmth_line(char* line) {
    char* field = nullptr;
    return split_fields(line, pair_separators, &field, 1) == 1 ? field : nullptr;
}

// From the third line on:
// eth0.10        | 10  | eth0
bool parse_vlan_line(char* line, vlan_line* parsed) {
    char* fields[3];
    if (split_fields(line, " |\n", fields, 3) < 3) {
        return false;
    }
    *parsed = {fields[0], decimal(fields[1]), fields[2]};
    return true;
}

// The second line, below "VLAN Dev name    | VLAN ID":
// Name-Type: VLAN_NAME_TYPE_RAW_PLUS_VID_NO_PAD
const char* parse_vlan_naming_line(char* line) {
    char* fields[2];
    const bool found =
        split_fields(line, ": \n", fields, 2) == 2 && strcmp(fields[0], "Name-Type") == 0;
    return found ? fields[1] : nullptr;
}

}  // namespace tarnnet
