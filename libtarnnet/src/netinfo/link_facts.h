// What the kernel's link and address messages say, as texts and numbers.
//
// Pure: no socket, no record. Used by the live read.
#pragma once

#include <linux/netlink.h>
#include <netinet/in.h>
#include <stddef.h>
#include <stdint.h>

#include "if_name.h"

namespace tarnnet {

constexpr size_t hwaddr_size = 20;                          // what is longer is cut
constexpr size_t live_address_size = INET6_ADDRSTRLEN + 4;  // an address, a slash, three digits

struct link_entry {
    uint32_t index;
    uint32_t flags;  // IFF_ bits
    char name[if_name_size];
    char hwaddr[hwaddr_size];  // empty when there is none to show
};

struct address_entry {
    uint32_t link;                 // index of the link that has the address
    uint32_t order;                // place among all addresses
    char text[live_address_size];  // "10.0.0.1/24"; a point-to-point one without the "/24"
};

// Takes a link message apart. False for one that is to be ignored: no new link, a loopback, no
// name, or cut short.
bool parse_link(nlmsghdr* message, link_entry* link);

// Takes an address message apart, but for the order. False for one that is to be ignored: no new
// address, of another family than IPv4 and IPv6, without an address, or cut short.
bool parse_address(nlmsghdr* message, address_entry* address);

// Writes a hardware address: "00:1a:2b:3c:4d:5e", cut to the size given.
void ll_addr_n2a(const unsigned char* address, size_t length, char* text, size_t size);

}  // namespace tarnnet
