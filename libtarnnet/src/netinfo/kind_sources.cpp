#include "netinfo/kind_sources.h"

#include <stddef.h>
#include <stdio.h>

#include "conf_lists.h"
#include "netinfo/bridges.h"
#include "netinfo/kind_parsers.h"
#include "netinfo/records.h"
#include "tarnnet.h"
#include "text.h"
#include "vlan_naming.h"

namespace {

const char veth_path[] = "/proc/tarn/veth";
const char vmth_path[] = "/proc/tarn/vmth";
const char vlan_path[] = "/proc/net/vlan/config";

const size_t line_size = 256;  // a longer line continues as the next one

// Opens a pair-device file behind its version line; NULL when it is missing or not understood.
FILE* open_pair_file(const char* path) {
    FILE* file = open_text_file(path);
    if (file == nullptr) {
        return nullptr;
    }
    char line[line_size];
    if (fgets(line, sizeof(line), file) == nullptr || !is_known_version(line)) {
        fclose(file);
        return nullptr;
    }
    return file;
}

void set_veth_end(const char* name, uint32_t veid, const char* peer_name, uint32_t peer_veid) {
    if (update_tarnnetif_info(name, veid, IFU_TYPE, number_value(IFT_VETH)) != nullptr &&
        update_last_tarnnetif_info(IFU_PEER_VEID, number_value(peer_veid)) != nullptr) {
        update_last_tarnnetif_info(IFU_PEER_NAME, text_value(peer_name));
    }
}

void read_veth_file(void) {
    FILE* file = open_pair_file(veth_path);
    if (file == nullptr) {
        return;
    }
    flush_veths();
    char line[line_size];
    while (fgets(line, sizeof(line), file) != nullptr) {
        struct veth_line pair;
        if (!parse_veth_line(line, &pair)) {
            continue;
        }
        add_veth(pair.host_name, pair.container_name, pair.veid);
        set_veth_end(pair.host_name, 0, pair.container_name, pair.veid);
        set_veth_end(pair.container_name, pair.veid, pair.host_name, 0);
    }
    fclose(file);
}

void read_vmth_file(void) {
    FILE* file = open_pair_file(vmth_path);
    if (file == nullptr) {
        return;
    }
    char line[line_size];
    while (fgets(line, sizeof(line), file) != nullptr) {
        const char* name = parse_vmth_line(line);
        if (name != nullptr) {
            update_tarnnetif_info(name, 0, IFU_TYPE, number_value(IFT_VETH));
        }
    }
    fclose(file);
}

void set_vlan_record(const struct vlan_line* vlan) {
    if (update_tarnnetif_info(vlan->name, 0, IFU_TYPE, number_value(IFT_VLAN)) != nullptr &&
        update_last_tarnnetif_info(IFU_VLAN_ID, number_value(vlan->vlan_id)) != nullptr) {
        update_last_tarnnetif_info(IFU_VLAN_MASTER, text_value(vlan->master));
    }
}

void read_vlan_naming(char* line) {
    const char* word = parse_vlan_naming_line(line);
    if (word != nullptr) {
        set_vlan_naming(word);
    }
}

void read_vlan_file(FILE* file, int make_records) {
    char line[line_size];
    if (fgets(line, sizeof(line), file) == nullptr ||  // the headings
        fgets(line, sizeof(line), file) == nullptr) {
        return;
    }
    read_vlan_naming(line);
    while (make_records != 0 && fgets(line, sizeof(line), file) != nullptr) {
        struct vlan_line vlan;
        if (parse_vlan_line(line, &vlan)) {
            set_vlan_record(&vlan);
        }
    }
}

}  // namespace

void read_vlan_config(int make_records) {
    FILE* file = open_text_file(vlan_path);
    if (file == nullptr) {
        return;
    }
    read_vlan_file(file, make_records);
    fclose(file);
}

void read_iface_types(void) {
    read_veth_file();
    read_vmth_file();
    read_vlan_config(1);
    read_bridges();
}
