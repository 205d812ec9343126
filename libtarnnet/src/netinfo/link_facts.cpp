#include "netinfo/link_facts.h"

#include <arpa/inet.h>
#include <linux/if_addr.h>
#include <linux/if_arp.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <netinet/in.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "rtnl.h"
#include "text.h"

// An address message: the link it belongs to, and its place in the dump.
struct address_entry {
    uint32_t link;
    uint32_t order;
    struct nlmsghdr* message;
};

namespace {

const int last_link_attribute = IFLA_IFNAME;  // the highest one that is looked at
const int last_address_attribute = IFA_LOCAL;

// Two ends with the same first four bytes are one address, whatever the family.
const size_t compared_address_bytes = 4;

// "255" of a prefix length, its slash and the NUL.
const size_t address_text_size = INET6_ADDRSTRLEN + 4;

// The body of a message of that type, or NULL when it is another one or shorter than its body.
template <class Body>
Body* body_of(struct nlmsghdr* message, uint16_t type) {
    if (message->nlmsg_type != type || message->nlmsg_len < NLMSG_LENGTH(sizeof(Body))) {
        return nullptr;
    }
    unsigned char* bytes = static_cast<unsigned char*>(static_cast<void*>(message));
    return static_cast<Body*>(static_cast<void*>(bytes + NLMSG_LENGTH(0)));
}

// Indexes the attributes behind the body of a message.
template <class Body>
void parse_attributes(struct nlmsghdr* message, Body* body, struct rtattr* table[], int max) {
    auto* start = static_cast<unsigned char*>(static_cast<void*>(body)) + NLMSG_ALIGN(sizeof(Body));
    const size_t header = NLMSG_SPACE(sizeof(Body));
    const size_t length = message->nlmsg_len > header ? message->nlmsg_len - header : 0;
    parse_rtattr(table, max, static_cast<struct rtattr*>(static_cast<void*>(start)),
                 static_cast<int>(length));
}

size_t payload_size(const struct rtattr* attribute) {
    return attribute->rta_len - RTA_LENGTH(0);
}

// Types of hardware whose addresses are shown.
bool shows_hwaddr(uint16_t hardware) {
    return hardware == ARPHRD_NETROM || hardware == ARPHRD_ETHER || hardware == ARPHRD_EETHER ||
           hardware == ARPHRD_IEEE802 || hardware == ARPHRD_PPP;
}

void take_name(const struct rtattr* attribute, char name[IFNAMSIZ]) {
    const size_t size = payload_size(attribute);
    const size_t length = size < IFNAMSIZ ? size : IFNAMSIZ - 1;
    memcpy(name, RTA_DATA(attribute), length);
    name[length] = '\0';
}

// The bytes of an address attribute, or NULL when it is missing or too short for its family.
const void* address_bytes(const struct rtattr* attribute, size_t size) {
    return attribute == nullptr || payload_size(attribute) < size ? nullptr : RTA_DATA(attribute);
}

int compare_entries(const void* a, const void* b) {
    const auto* left = static_cast<const struct address_entry*>(a);
    const auto* right = static_cast<const struct address_entry*>(b);
    if (left->link != right->link) {
        return left->link < right->link ? -1 : 1;
    }
    return left->order < right->order ? -1 : (left->order > right->order ? 1 : 0);
}

void index_messages(struct address_index* addresses, const struct message_list* list) {
    for (struct nlmsghdr* message = first_message(list); message != nullptr;
         message = next_message(list, message)) {
        const auto* body = body_of<struct ifaddrmsg>(message, RTM_NEWADDR);
        if (body == nullptr || (body->ifa_family != AF_INET && body->ifa_family != AF_INET6)) {
            continue;
        }
        addresses->entries[addresses->count] = {body->ifa_index,
                                                static_cast<uint32_t>(addresses->count), message};
        addresses->count++;
    }
}

// The first entry of a link, or where it would be.
size_t first_entry(const struct address_index* addresses, uint32_t link) {
    size_t low = 0;
    size_t high = addresses->count;
    while (low < high) {
        const size_t middle = low + (high - low) / 2;
        if (addresses->entries[middle].link < link) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return low;
}

}  // namespace

bool parse_link(struct nlmsghdr* message, struct link_facts* facts, uint32_t* index) {
    auto* body = body_of<struct ifinfomsg>(message, RTM_NEWLINK);
    if (body == nullptr || body->ifi_type == ARPHRD_LOOPBACK) {
        return false;
    }
    struct rtattr* table[last_link_attribute + 1];
    parse_attributes(message, body, table, last_link_attribute);
    if (table[IFLA_IFNAME] == nullptr) {
        return false;
    }
    take_name(table[IFLA_IFNAME], facts->name);
    facts->addresses[0] = '\0';
    facts->hwaddr[0] = '\0';
    const struct rtattr* address = table[IFLA_ADDRESS];
    if (address != nullptr && shows_hwaddr(body->ifi_type)) {
        ll_addr_n2a(static_cast<const unsigned char*>(RTA_DATA(address)), payload_size(address),
                    facts->hwaddr, sizeof(facts->hwaddr));
    }
    facts->flags = body->ifi_flags;
    *index = static_cast<uint32_t>(body->ifi_index);
    return true;
}

int make_address_index(struct address_index* addresses, const struct message_list* ipv4,
                       const struct message_list* ipv6) {
    *addresses = {};
    const size_t most = ipv4->count + ipv6->count;
    if (most == 0) {
        return 0;
    }
    addresses->entries =
        static_cast<struct address_entry*>(calloc(most, sizeof(struct address_entry)));
    if (addresses->entries == nullptr) {
        return -1;
    }
    index_messages(addresses, ipv4);
    index_messages(addresses, ipv6);
    qsort(addresses->entries, addresses->count, sizeof(struct address_entry), compare_entries);
    return 0;
}

void free_address_index(struct address_index* addresses) {
    free(addresses->entries);
    *addresses = {};
}

bool print_addrinfo(struct nlmsghdr* message, char* text, size_t size) {
    auto* body = body_of<struct ifaddrmsg>(message, RTM_NEWADDR);
    if (body == nullptr) {
        return false;
    }
    struct rtattr* table[last_address_attribute + 1];
    parse_attributes(message, body, table, last_address_attribute);
    const size_t width =
        body->ifa_family == AF_INET6 ? sizeof(struct in6_addr) : sizeof(struct in_addr);
    const void* local = address_bytes(table[IFA_LOCAL], width);
    const void* peer = address_bytes(table[IFA_ADDRESS], width);
    const void* shown = local != nullptr ? local : peer;
    char address[INET6_ADDRSTRLEN];
    if (shown == nullptr ||
        inet_ntop(body->ifa_family, shown, address, sizeof(address)) == nullptr) {
        return false;
    }
    if (local != nullptr && peer != nullptr && memcmp(local, peer, compared_address_bytes) != 0) {
        copy_cut(text, size, address);
    } else {
        snprintf(text, size, "%s/%u", address, unsigned{body->ifa_prefixlen});
    }
    return true;
}

void print_selected_addrinfo(const struct address_index* addresses, uint32_t index, char* text,
                             size_t size) {
    size_t used = 0;
    text[0] = '\0';
    for (size_t i = first_entry(addresses, index);
         i < addresses->count && addresses->entries[i].link == index; ++i) {
        char address[address_text_size];
        if (!print_addrinfo(addresses->entries[i].message, address, sizeof(address))) {
            continue;
        }
        const int length =
            snprintf(text + used, size - used, "%s%s", used == 0 ? "" : " ", address);
        used += static_cast<size_t>(length);
        if (used >= size) {
            return;
        }
    }
}

void ll_addr_n2a(const unsigned char* address, size_t length, char* text, size_t size) {
    text[0] = '\0';
    size_t used = 0;
    for (size_t i = 0; i < length && used < size; ++i) {
        const int written =
            snprintf(text + used, size - used, "%s%02x", i == 0 ? "" : ":", unsigned{address[i]});
        used += static_cast<size_t>(written);
    }
}
