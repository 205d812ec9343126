#include "netinfo/live_read.h"

#include <linux/rtnetlink.h>
#include <stdio.h>
#include <string.h>
#include <sys/socket.h>

#include "netinfo/container_read.h"
#include "netinfo/records.h"
#include "rtnl.h"
#include "tarnnet.h"

namespace {

// A wider range than this many ids apart asks for the running containers instead.
const uint32_t widest_range = 11;

const char vnic_prefix[] = "vnic";

// The answers to the dumps of one read.
struct live_tables {
    struct message_list links;
    struct message_list ipv4;
    struct message_list ipv6;
};

int collect_message(const struct sockaddr_nl* /*sender*/, struct nlmsghdr* message, void* list) {
    return add_message(static_cast<struct message_list*>(list), message);
}

int dump_table(struct rtnl_sock* sock, int family, int type, struct message_list* list) {
    if (rtnl_wilddump_request(sock, family, type) < 0) {
        perror("Cannot send dump request");
        return -1;
    }
    if (rtnl_dump_filter(sock, collect_message, list, nullptr, nullptr) < 0) {
        fputs("Dump terminated\n", stderr);
        return -1;
    }
    return 0;
}

int dump_tables(struct rtnl_sock* sock, uint32_t flags, struct live_tables* tables) {
    if (dump_table(sock, AF_UNSPEC, RTM_GETLINK, &tables->links) != 0) {
        return -1;
    }
    if ((flags & TARNNET_READ_IPV4) != 0 &&
        dump_table(sock, AF_INET, RTM_GETADDR, &tables->ipv4) != 0) {
        return -1;
    }
    if ((flags & TARNNET_READ_IPV6) != 0 &&
        dump_table(sock, AF_INET6, RTM_GETADDR, &tables->ipv6) != 0) {
        return -1;
    }
    return 0;
}

void print_linkinfo(struct nlmsghdr* message, const struct address_index* addresses, link_sink sink,
                    void* argument) {
    struct link_facts facts;
    uint32_t index = 0;
    if (!parse_link(message, &facts, &index)) {
        return;
    }
    print_selected_addrinfo(addresses, index, facts.addresses, sizeof(facts.addresses));
    sink(argument, &facts);
}

void print_links(const struct live_tables* tables, link_sink sink, void* argument) {
    struct address_index addresses;
    if (make_address_index(&addresses, &tables->ipv4, &tables->ipv6) != 0) {
        return;
    }
    for (struct nlmsghdr* message = first_message(&tables->links); message != nullptr;
         message = next_message(&tables->links, message)) {
        print_linkinfo(message, &addresses, sink, argument);
    }
    free_address_index(&addresses);
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
    struct live_tables tables = {};
    if (dump_tables(&sock, flags, &tables) == 0) {
        print_links(&tables, sink, argument);
    }
    free_messages(&tables.links);
    free_messages(&tables.ipv4);
    free_messages(&tables.ipv6);
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
