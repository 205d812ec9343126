#include "netinfo/live_read.h"

#include <net/if.h>

#include "netinfo/records.h"
#include "state.h"
#include "tarnnet.h"
#include "text.h"

namespace tarnnet {

namespace {

void print_linkinfo(const link_tables& tables, const link_entry& link, link_sink sink,
                    void* argument) {
    link_facts facts;
    copy_cut(facts.name, sizeof(facts.name), link.name);
    copy_cut(facts.hwaddr, sizeof(facts.hwaddr), link.hwaddr);
    facts.flags = link.flags;
    print_selected_addrinfo(tables, link.index, facts.addresses);
    sink(argument, &facts);
}

// A letter or digit of the C locale.
bool is_alphanumeric(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// The record touched last gets the hardware address, and a kind by it when it has none yet.
tarnnetif_info* apply_hwaddr(const link_facts* facts) {
    tarnnetif_info* record = update_last_tarnnetif_info(IFU_HWADDR, text_value(facts->hwaddr));
    if (record == nullptr || record->type != IFT_GENERIC) {
        return record;
    }
    const bool vnic = has_prefix(facts->name, "vnic");
    return update_last_tarnnetif_info(IFU_TYPE, number_value(vnic ? IFT_VNIC : IFT_ETHERNET));
}

}  // namespace

void read_ifconfioctl_insider(uint32_t flags, link_sink sink, void* argument) {
    link_tables tables;
    if (state.host.read_tables(flags, &tables) != 0) {
        return;
    }
    sort_addresses(&tables);
    for (const link_entry& link : tables.links) {
        print_linkinfo(tables, link, sink, argument);
    }
}

void apply_link_facts(uint32_t veid, const link_facts* facts) {
    // Also without addresses: this makes the record, and empties its list.
    tarnnetif_info* record =
        update_tarnnetif_info(facts->name, veid, IFU_ADDRESSES, text_value(facts->addresses));
    if (record != nullptr && is_alphanumeric(facts->hwaddr[0])) {
        record = apply_hwaddr(facts);
    }
    if (record == nullptr) {
        return;
    }
    const bool up = (facts->flags & IFF_UP) != 0;
    if (update_last_tarnnetif_info(
            IFU_STATE, number_value(up ? TARNNET_STATE_UP : TARNNET_STATE_DOWN)) != nullptr) {
        update_last_tarnnetif_info(IFU_LINK_FLAGS, number_value(facts->flags));
    }
}

}  // namespace tarnnet
