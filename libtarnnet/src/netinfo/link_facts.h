// What the kernel's link and address messages say, as texts and numbers.
//
// Pure: no socket, no record. Used by the live read.
#pragma once

#include <linux/netlink.h>
#include <net/if.h>
#include <netinet/in.h>
#include <stddef.h>
#include <stdint.h>

enum {
    HWADDR_SIZE = 20,                     // bytes, what is longer is cut
    ADDRESS_SIZE = INET6_ADDRSTRLEN + 4,  // an address, a slash, three digits
};

struct link_entry {
    uint32_t index;
    uint32_t flags;  // IFF_ bits
    char name[IFNAMSIZ];
    char hwaddr[HWADDR_SIZE];  // empty when there is none to show
};

struct address_entry {
    uint32_t link;            // index of the link that has the address
    uint32_t order;           // place among all addresses
    char text[ADDRESS_SIZE];  // "10.0.0.1/24"; a point-to-point one without the "/24"
};

// Takes a link message apart. False for one that is to be ignored: no new link, a loopback, no
// name, or cut short.
bool parse_link(struct nlmsghdr* message, struct link_entry* link);

// Takes an address message apart, but for the order. False for one that is to be ignored: no new
// address, of another family than IPv4 and IPv6, without an address, or cut short.
bool parse_address(struct nlmsghdr* message, struct address_entry* address);

// Writes a hardware address: "00:1a:2b:3c:4d:5e", cut to the size given.
void ll_addr_n2a(const unsigned char* address, size_t length, char* text, size_t size);
