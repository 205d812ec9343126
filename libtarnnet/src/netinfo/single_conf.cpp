#include "netinfo/single_conf.h"

#include <stddef.h>

#include "conf_file.h"
#include "netinfo/container_read.h"
#include "netinfo/records.h"

namespace tarnnet {

namespace {

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

}  // namespace tarnnet
