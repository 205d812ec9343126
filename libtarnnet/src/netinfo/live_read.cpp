#include "netinfo/live_read.h"

#include <linux/rtnetlink.h>
#include <stdio.h>
#include <string.h>
#include <sys/socket.h>

#include "netinfo/container_read.h"
#include "netinfo/records.h"
#include "rtnl.h"
#include "tarnnet.h"
#include "text.h"

namespace {

// A wider range than this many ids apart asks for the running containers instead.
const uint32_t widest_range = 11;

const char vnic_prefix[] = "vnic";

int collect_link_message(const struct sockaddr_nl* /*sender*/, struct nlmsghdr* message,
                         void* tables) {
    return collect_link(static_cast<struct link_tables*>(tables), message);
}

int collect_address_message(const struct sockaddr_nl* /*sender*/, struct nlmsghdr* message,
                            void* tables) {
    return collect_address(static_cast<struct link_tables*>(tables), message);
}

int dump_table(struct rtnl_sock* sock, int family, int type, rtnl_filter_fn collect,
               struct link_tables* tables) {
    if (rtnl_wilddump_request(sock, family, type) < 0) {
        perror("Cannot send dump request");
        return -1;
    }
    if (rtnl_dump_filter(sock, collect, tables, nullptr, nullptr) < 0) {
        fputs("Dump terminated\n", stderr);
        return -1;
    }
    return 0;
}

int dump_addresses(struct rtnl_sock* sock, int family, struct link_tables* tables) {
    return dump_table(sock, family, RTM_GETADDR, collect_address_message, tables);
}

int dump_tables(struct rtnl_sock* sock, uint32_t flags, struct link_tables* tables) {
    if (dump_table(sock, AF_UNSPEC, RTM_GETLINK, collect_link_message, tables) != 0) {
        return -1;
    }
    if ((flags & TARNNET_READ_IPV4) != 0 && dump_addresses(sock, AF_INET, tables) != 0) {
        return -1;
    }
    if ((flags & TARNNET_READ_IPV6) != 0 && dump_addresses(sock, AF_INET6, tables) != 0) {
        return -1;
    }
    return 0;
}

void print_linkinfo(const struct link_tables* tables, const struct link_entry* link, link_sink sink,
                    void* argument) {
    struct link_facts facts;
    copy_cut(facts.name, sizeof(facts.name), link->name);
    copy_cut(facts.hwaddr, sizeof(facts.hwaddr), link->hwaddr);
    facts.flags = link->flags;
    print_selected_addrinfo(tables, link->index, facts.addresses);
    sink(argument, &facts);
}

// A letter or digit of the C locale.
bool is_alphanumeric(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// The record touched last gets the hardware address, and a kind by it when it has none yet.
struct tarnnetif_info* apply_hwaddr(const struct link_facts* facts) {
    struct tarnnetif_info* record =
        update_last_tarnnetif_info(IFU_HWADDR, text_value(facts->hwaddr));
    if (record == nullptr || record->type != IFT_GENERIC) {
        return record;
    }
    const bool vnic = strncmp(facts->name, vnic_prefix, sizeof(vnic_prefix) - 1) == 0;
    return update_last_tarnnetif_info(IFU_TYPE, number_value(vnic ? IFT_VNIC : IFT_ETHERNET));
}

void apply_host_link(void* /*argument*/, const struct link_facts* facts) {
    apply_link_facts(0, facts);
}

}  // namespace

void read_ifconfioctl_insider(uint32_t flags, link_sink sink, void* argument) {
    struct rtnl_sock sock;
    if (rtnl_open(&sock, 0) < 0) {
        return;
    }
    struct link_tables tables = {};
    if (dump_tables(&sock, flags, &tables) == 0) {
        sort_addresses(&tables);
        for (size_t i = 0; i < tables.link_count; ++i) {
            print_linkinfo(&tables, &tables.links[i], sink, argument);
        }
    }
    free_link_tables(&tables);
    rtnl_close(&sock);
}

void apply_link_facts(uint32_t veid, const struct link_facts* facts) {
    struct tarnnetif_info* record =
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

void read_single_ifconfioctl(uint32_t flags, uint32_t veid) {
    use_origin(veid, ORIGIN_LIVE);
    if (veid == 0) {
        read_ifconfioctl_insider(flags, apply_host_link, nullptr);
    } else {
        read_container_links(flags, veid);
    }
    purge_old_generations();
}

void read_ifconfioctl(uint32_t flags, uint32_t min_veid, uint32_t max_veid) {
    if (max_veid < min_veid) {
        return;
    }
    const uint32_t distance = max_veid - min_veid;
    if (distance > widest_range) {
        read_running_containers(flags);
        return;
    }
    for (uint32_t i = 0; i <= distance; ++i) {
        read_single_ifconfioctl(flags, min_veid + i);
    }
}
