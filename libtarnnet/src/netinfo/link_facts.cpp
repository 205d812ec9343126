#include "netinfo/link_facts.h"

#include <arpa/inet.h>
#include <linux/if_addr.h>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <net/if_arp.h>
#include <stdio.h>
#include <string.h>

#include "rtnl.h"

namespace tarnnet {

namespace {

constexpr int last_link_attribute = IFLA_IFNAME;  // the highest one that is looked at
constexpr int last_address_attribute = IFA_LOCAL;

// Two ends with the same first four bytes are one address, whatever the family: of IPv6 that is a
// common beginning, and the prefix stays. Not to be mended.
constexpr size_t compared_address_bytes = 4;

// Indexes the attributes behind the body of a message.
void parse_attributes(nlmsghdr* message, size_t body_size, rtattr* table[], int max) {
    const message_bytes bytes = body_of(message).after(body_size);
    parse_rtattr(table, max, bytes.attributes(), static_cast<int>(bytes.size));
}

// Types of hardware whose addresses are shown.
bool shows_hwaddr(uint16_t hardware) {
    return hardware == ARPHRD_NETROM || hardware == ARPHRD_ETHER || hardware == ARPHRD_EETHER ||
           hardware == ARPHRD_IEEE802 || hardware == ARPHRD_PPP;
}

// A name may come without its NUL.
void take_name(message_bytes bytes, char name[if_name_size]) {
    const size_t length = bytes.size < if_name_size ? bytes.size : if_name_size - 1;
    memcpy(name, bytes.start, length);
    name[length] = '\0';
}

// The bytes of an address attribute, or null when it is missing or too short for its family.
const unsigned char* address_bytes(rtattr* attribute, size_t size) {
    return attribute == nullptr || payload_of(attribute).size < size ? nullptr
                                                                     : payload_of(attribute).start;
}

// Writes the address of a message; false without one.
bool print_addrinfo(nlmsghdr* message, const ifaddrmsg* body, char text[live_address_size]) {
    rtattr* table[last_address_attribute + 1];
    parse_attributes(message, sizeof(*body), table, last_address_attribute);
    const size_t width = body->ifa_family == AF_INET6 ? sizeof(in6_addr) : sizeof(in_addr);
    const unsigned char* local = address_bytes(table[IFA_LOCAL], width);
    const unsigned char* peer = address_bytes(table[IFA_ADDRESS], width);
    const unsigned char* shown = local != nullptr ? local : peer;
    if (shown == nullptr) {
        return false;
    }
    inet_ntop(body->ifa_family, shown, text, INET6_ADDRSTRLEN);
    const bool point_to_point =
        local != nullptr && peer != nullptr && memcmp(local, peer, compared_address_bytes) != 0;
    if (!point_to_point) {
        const size_t length = strlen(text);
        snprintf(text + length, live_address_size - length, "/%u", body->ifa_prefixlen);
    }
    return true;
}

}  // namespace

// As the kernel answers a request for the links, sizes in bytes, each attribute padded to four:
//
//     nlmsghdr 16 | ifinfomsg 16 | rtattr 4 IFLA_IFNAME | "eth0" and its NUL 5 | ...
//     ... | rtattr 4 IFLA_ADDRESS | 00 1a 2b 3c 4d 5e | some thirty others
bool parse_link(nlmsghdr* message, link_entry* link) {
    const auto* body = body_of(message).begin_with<ifinfomsg>();
    if (message->nlmsg_type != RTM_NEWLINK || body == nullptr ||
        body->ifi_type == ARPHRD_LOOPBACK) {
        return false;
    }
    rtattr* table[last_link_attribute + 1];
    parse_attributes(message, sizeof(*body), table, last_link_attribute);
    if (table[IFLA_IFNAME] == nullptr) {
        return false;
    }
    take_name(payload_of(table[IFLA_IFNAME]), link->name);
    link->hwaddr[0] = '\0';
    if (table[IFLA_ADDRESS] != nullptr && shows_hwaddr(body->ifi_type)) {
        const message_bytes address = payload_of(table[IFLA_ADDRESS]);
        ll_addr_n2a(address.start, address.size, link->hwaddr, sizeof(link->hwaddr));
    }
    link->flags = body->ifi_flags;
    link->index = static_cast<uint32_t>(body->ifi_index);
    return true;
}

// The same for addresses; nothing follows that is looked at:
//
//     nlmsghdr 16 | ifaddrmsg 8 | rtattr 4 IFA_ADDRESS | 10 0 0 1 | rtattr 4 IFA_LOCAL | 10 0 0 1
//
// IPv6 has no IFA_LOCAL as a rule. Where the two differ, the link leads to one other host and
// IFA_ADDRESS is that host's.
bool parse_address(nlmsghdr* message, address_entry* address) {
    const auto* body = body_of(message).begin_with<ifaddrmsg>();
    if (message->nlmsg_type != RTM_NEWADDR || body == nullptr ||
        (body->ifa_family != AF_INET && body->ifa_family != AF_INET6)) {
        return false;
    }
    address->link = body->ifa_index;
    return print_addrinfo(message, body, address->text);
}

void ll_addr_n2a(const unsigned char* address, size_t length, char* text, size_t size) {
    constexpr char digits[] = "0123456789abcdef";
    size_t used = 0;
    // Two digits and a ':' for each byte, but for the last ':'.
    for (size_t i = 0; i + 1 < 3 * length && used + 1 < size; ++i) {
        const unsigned char byte = address[i / 3];
        text[used++] = i % 3 == 2 ? ':' : digits[i % 3 == 0 ? byte >> 4 : byte & 15];
    }
    text[used] = '\0';
}

}  // namespace tarnnet
