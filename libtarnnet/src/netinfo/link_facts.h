// What the kernel's link and address messages say about one link, as texts and numbers.
//
// Pure: no socket, no record. Used by the live read.
#pragma once

#include <linux/netlink.h>
#include <net/if.h>
#include <stddef.h>
#include <stdint.h>

#include "netinfo/message_list.h"

enum {
    ADDRESSES_SIZE = 1024,  // bytes, what is longer is cut
    HWADDR_SIZE = 20
};

struct link_facts {
    char name[IFNAMSIZ];
    char addresses[ADDRESSES_SIZE];  // separated by one blank
    char hwaddr[HWADDR_SIZE];        // empty when there is none to show
    uint32_t flags;                  // IFF_ bits
};

// Takes a link message apart: everything but the addresses, and the link's index. False for a
// message that is to be ignored: no new link, a loopback, no name, or cut short.
bool parse_link(struct nlmsghdr* message, struct link_facts* facts, uint32_t* index);

// The addresses of a dump by link, each link's in the order of their arrival. Refers to the lists
// it was made of.
struct address_index {
    struct address_entry* entries;
    size_t count;
};

// Indexes the addresses of both lists, those of the first before those of the second. 0, or -1 when
// memory is short. Given back with free_address_index().
int make_address_index(struct address_index* addresses, const struct message_list* ipv4,
                       const struct message_list* ipv6);
void free_address_index(struct address_index* addresses);

// Writes the addresses of a link, separated by one blank, cut to the size given.
void print_selected_addrinfo(const struct address_index* addresses, uint32_t index, char* text,
                             size_t size);

// Writes one address message: "10.0.0.1/24", without the "/24" for a point-to-point address. False
// when the message carries no address.
bool print_addrinfo(struct nlmsghdr* message, char* text, size_t size);

// Writes a hardware address: "00:1a:2b:3c:4d:5e", cut to the size given.
void ll_addr_n2a(const unsigned char* address, size_t length, char* text, size_t size);
