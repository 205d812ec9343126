// The links and addresses of one live read, collected in the order of their arrival.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "netinfo/link_facts.h"

enum { ADDRESSES_SIZE = 1024 };  // bytes for the addresses of a link, what is longer is cut

// Zero-initialised they are empty. What each message says is kept and not the message, which is
// some thirty times as long.
struct link_tables {
    struct link_entry* links;
    size_t link_count;
    size_t link_room;
    struct address_entry* addresses;
    size_t address_count;
    size_t address_room;
};

// Append what a message says, if anything; 0, or -1 when memory is short.
int collect_link(struct link_tables* tables, struct nlmsghdr* message);
int collect_address(struct link_tables* tables, struct nlmsghdr* message);

// Brings the addresses of each link together, in the order of their arrival.
void sort_addresses(struct link_tables* tables);

// Writes the addresses of a link, separated by one blank. The addresses are sorted.
void print_selected_addrinfo(const struct link_tables* tables, uint32_t link,
                             char text[ADDRESSES_SIZE]);

void free_link_tables(struct link_tables* tables);
