#include "netinfo/link_facts.h"

#include <arpa/inet.h>
#include <linux/if_addr.h>
#include <linux/if_arp.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <string.h>

#include "rtnl.h"

namespace {

const int last_link_attribute = IFLA_IFNAME;  // the highest one that is looked at
const int last_address_attribute = IFA_LOCAL;

// Two ends with the same first four bytes are one address, whatever the family.
const size_t compared_address_bytes = 4;

// A fixed buffer that is filled from the front; what does not fit is cut.
struct text_buffer {
    char* text;
    size_t size;  // the NUL included
    size_t used;
};

void put_char(struct text_buffer* out, char c) {
    if (out->used + 1 < out->size) {
        out->text[out->used++] = c;
        out->text[out->used] = '\0';
    }
}

void put_text(struct text_buffer* out, const char* text) {
    while (*text != '\0') {
        put_char(out, *text++);
    }
}

void put_decimal(struct text_buffer* out, unsigned char number) {
    if (number >= 100) {
        put_char(out, static_cast<char>('0' + number / 100));
    }
    if (number >= 10) {
        put_char(out, static_cast<char>('0' + number / 10 % 10));
    }
    put_char(out, static_cast<char>('0' + number % 10));
}

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

const unsigned char* payload(const struct rtattr* attribute) {
    return static_cast<const unsigned char*>(static_cast<const void*>(attribute)) + RTA_LENGTH(0);
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
    memcpy(name, payload(attribute), length);
    name[length] = '\0';
}

// The bytes of an address attribute, or NULL when it is missing or too short for its family.
const void* address_bytes(const struct rtattr* attribute, size_t size) {
    return attribute == nullptr || payload_size(attribute) < size ? nullptr : payload(attribute);
}

// Written by hand, as is the hardware address: the conversions of a thousand links would cost more
// than their records.
void put_ipv4(struct text_buffer* out, const void* address) {
    const auto* bytes = static_cast<const unsigned char*>(address);
    for (size_t i = 0; i < sizeof(struct in_addr); ++i) {
        if (i > 0) {
            put_char(out, '.');
        }
        put_decimal(out, bytes[i]);
    }
}

void put_ipv6(struct text_buffer* out, const void* address) {
    char text[INET6_ADDRSTRLEN];
    if (inet_ntop(AF_INET6, address, text, sizeof(text)) != nullptr) {
        put_text(out, text);
    }
}

// Writes the address of a message; false without one.
bool print_addrinfo(struct nlmsghdr* message, struct ifaddrmsg* body, struct text_buffer* out) {
    struct rtattr* table[last_address_attribute + 1];
    parse_attributes(message, body, table, last_address_attribute);
    const bool is_ipv6 = body->ifa_family == AF_INET6;
    const size_t width = is_ipv6 ? sizeof(struct in6_addr) : sizeof(struct in_addr);
    const void* local = address_bytes(table[IFA_LOCAL], width);
    const void* peer = address_bytes(table[IFA_ADDRESS], width);
    const void* shown = local != nullptr ? local : peer;
    if (shown == nullptr) {
        return false;
    }
    (is_ipv6 ? put_ipv6 : put_ipv4)(out, shown);
    const bool point_to_point =
        local != nullptr && peer != nullptr && memcmp(local, peer, compared_address_bytes) != 0;
    if (!point_to_point) {
        put_char(out, '/');
        put_decimal(out, body->ifa_prefixlen);
    }
    return true;
}

}  // namespace

bool parse_link(struct nlmsghdr* message, struct link_entry* link) {
    auto* body = body_of<struct ifinfomsg>(message, RTM_NEWLINK);
    if (body == nullptr || body->ifi_type == ARPHRD_LOOPBACK) {
        return false;
    }
    struct rtattr* table[last_link_attribute + 1];
    parse_attributes(message, body, table, last_link_attribute);
    if (table[IFLA_IFNAME] == nullptr) {
        return false;
    }
    take_name(table[IFLA_IFNAME], link->name);
    link->hwaddr[0] = '\0';
    const struct rtattr* address = table[IFLA_ADDRESS];
    if (address != nullptr && shows_hwaddr(body->ifi_type)) {
        ll_addr_n2a(payload(address), payload_size(address), link->hwaddr, sizeof(link->hwaddr));
    }
    link->flags = body->ifi_flags;
    link->index = static_cast<uint32_t>(body->ifi_index);
    return true;
}

bool parse_address(struct nlmsghdr* message, struct address_entry* address) {
    auto* body = body_of<struct ifaddrmsg>(message, RTM_NEWADDR);
    if (body == nullptr || (body->ifa_family != AF_INET && body->ifa_family != AF_INET6)) {
        return false;
    }
    address->link = body->ifa_index;
    struct text_buffer out = {address->text, sizeof(address->text), 0};
    return print_addrinfo(message, body, &out);
}

void ll_addr_n2a(const unsigned char* address, size_t length, char* text, size_t size) {
    const char digits[] = "0123456789abcdef";
    struct text_buffer out = {text, size, 0};
    text[0] = '\0';
    for (size_t i = 0; i < length; ++i) {
        if (i > 0) {
            put_char(&out, ':');
        }
        put_char(&out, digits[address[i] >> 4]);
        put_char(&out, digits[address[i] & 15]);
    }
}
