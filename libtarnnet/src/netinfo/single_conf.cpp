#include "netinfo/single_conf.h"

#include <stddef.h>

#include <memory>

#include "netinfo/conf_file.h"
#include "netinfo/container_read.h"
#include "netinfo/records.h"
#include "owners.h"
#include "sysconfig.h"
#include "tarnnet.h"

namespace tarnnet {

namespace {

struct by_release {
    void operator()(tarnnet_info* result) const { tarnnet_release_info_SL(result); }
};
using owned_result = std::unique_ptr<tarnnet_info, by_release>;

// The two places where a cache of the configuration would come in. There is none: it is read anew
// each time.
bool conf_is_up_to_date(uint32_t /*veid*/) {
    return false;
}

void mark_conf_up_to_date(uint32_t /*veid*/) {}

// What the configuration is about to say anew. A record that is replaced moves to the head of the
// list, which the walk has passed; what it leaves behind is no longer in the list.
void clear_networks(uint32_t veid) {
    tarnnetif_info* next = nullptr;
    for (tarnnetif_info* record = netinfo.active; record != nullptr; record = next) {
        next = record->next;
        if (record->veid != veid) {
            continue;
        }
        record = update_tarnnetif_info_by_ptr(record, IFU_NETWORK_ID, text_value(nullptr));
        if (record != nullptr) {
            update_tarnnetif_info_by_ptr(record, IFU_BRIDGE, text_value(nullptr));
        }
    }
}

// Every line that asks for DHCP counts. The record is named, not pointed at: the first mark
// replaces it by another one.
void mark_dhcp(const char* name, const char* path) {
    for (size_t lines = count_dhcp_lines(path); lines > 0; --lines) {
        update_tarnnetif_info(name, 0, IFU_CONF_ADDRESSES, text_value("dhcp"));
    }
}

}  // namespace

void read_single_conf(uint32_t /*flags*/, uint32_t veid) {
    if (conf_is_up_to_date(veid)) {
        return;
    }
    use_origin(veid, origin_conf);
    clear_networks(veid);
    if (veid != 0) {
        read_container_conf(veid);
    } else {
        read_tarnnetconf(0);  // a file that cannot be read says nothing
    }
    purge_old_generations();
    mark_conf_up_to_date(veid);
}

int check_sysconf() {
    if (!has_sysconfig()) {
        return 0;  // nothing is looked for then, not once for each interface
    }
    const tarnnet_filter host = {IFT_ALL, nullptr, nullptr, nullptr, 0, 0};
    const owned_result snapshot(get_cached_info(&host));
    if (!snapshot) {
        return -1;
    }
    for (tarnnetif_info** record = snapshot->records; *record != nullptr; ++record) {
        const tarnnetif_info* found = *record;
        const owned_text path = find_sysconfig(found->name, found->type, found->hwaddr);
        if (path) {
            mark_dhcp(found->name, path.get());
        }
    }
    return 0;
}

}  // namespace tarnnet
