// The links and addresses of one live read, collected in the order of their arrival.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "netinfo/link_facts.h"
#include "owners.h"

namespace tarnnet {

constexpr size_t address_line_size = 1024;  // for all addresses of a link, what is longer is cut

// What each message says is kept and not the message, which is some thirty times as long.
struct link_tables {
    growing_array<link_entry> links;
    growing_array<address_entry> addresses;
};

// Append what a message says, if anything; 0, or -1 when memory is short.
int collect_link(link_tables* tables, nlmsghdr* message);
int collect_address(link_tables* tables, nlmsghdr* message);

// Brings the addresses of each link together, in the order of their arrival.
void sort_addresses(link_tables* tables);

// Writes the addresses of a link, separated by one blank. The addresses are sorted.
void print_selected_addrinfo(const link_tables& tables, uint32_t link,
                             char text[address_line_size]);

}  // namespace tarnnet
