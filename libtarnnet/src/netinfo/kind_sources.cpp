#include "netinfo/kind_sources.h"

#include "conf_lists.h"
#include "netinfo/bridges.h"
#include "netinfo/kind_parsers.h"
#include "netinfo/records.h"
#include "state.h"
#include "text.h"

namespace tarnnet {

namespace {

// Goes behind the version line of a pair-device file; false when the file is not understood.
bool skip_version(text_file* file) {
    char* line = file->is_read() ? file->next_line() : nullptr;
    return line != nullptr && is_known_version(line);
}

void set_veth_end(const char* name, uint32_t veid, const char* peer_name, uint32_t peer_veid) {
    if (update_tarnnetif_info(name, veid, IFU_TYPE, number_value(IFT_VETH)) != nullptr &&
        update_last_tarnnetif_info(IFU_PEER_VEID, number_value(peer_veid)) != nullptr) {
        update_last_tarnnetif_info(IFU_PEER_NAME, text_value(peer_name));
    }
}

void read_veth_file() {
    text_file file(state.host.pair_devices);
    if (!skip_version(&file)) {
        return;
    }
    configured.veths.flush();
    while (char* line = file.next_line()) {
        veth_line pair;
        if (!parse_veth_line(line, &pair)) {
            continue;
        }
        add_veth(pair.host_name, pair.container_name, pair.veid);
        set_veth_end(pair.host_name, 0, pair.container_name, pair.veid);
        set_veth_end(pair.container_name, pair.veid, pair.host_name, 0);
    }
}

void read_vmth_file() {
    text_file file(state.host.more_pair_devices);
    if (!skip_version(&file)) {
        return;
    }
    while (char* line = file.next_line()) {
        const char* name = parse_vmth_line(line);
        if (name != nullptr) {
            update_tarnnetif_info(name, 0, IFU_TYPE, number_value(IFT_VETH));
        }
    }
}

void set_vlan_record(const vlan_line* vlan) {
    if (update_tarnnetif_info(vlan->name, 0, IFU_TYPE, number_value(IFT_VLAN)) != nullptr &&
        update_last_tarnnetif_info(IFU_VLAN_ID, number_value(vlan->vlan_id)) != nullptr) {
        update_last_tarnnetif_info(IFU_VLAN_MASTER, text_value(vlan->master));
    }
}

// Takes the naming style from the second line, below the titles; false when there is none.
bool take_vlan_naming(text_file* file) {
    char* line = file->next_line() == nullptr ? nullptr : file->next_line();
    const char* word = line == nullptr ? nullptr : parse_vlan_naming_line(line);
    if (word != nullptr) {
        state.vlan_naming = style_of_word(word);
    }
    return line != nullptr;
}

}  // namespace

void read_vlan_config(int make_records) {
    text_file file(state.host.vlans);
    if (!file.is_read() || !take_vlan_naming(&file) || make_records == 0) {
        return;
    }
    while (char* line = file.next_line()) {
        vlan_line vlan;
        if (parse_vlan_line(line, &vlan)) {
            set_vlan_record(&vlan);
        }
    }
}

// Bridges come last: a port that is an end of a pair hands its network on to the other end.
void read_iface_types() {
    read_veth_file();
    read_vmth_file();
    read_vlan_config(1);
    read_bridges();
}

}  // namespace tarnnet
