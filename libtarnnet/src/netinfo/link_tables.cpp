#include "netinfo/link_tables.h"

#include <string.h>

namespace tarnnet {

namespace {

int compare_addresses(const void* a, const void* b) {
    const auto* left = static_cast<const address_entry*>(a);
    const auto* right = static_cast<const address_entry*>(b);
    if (left->link != right->link) {
        return left->link < right->link ? -1 : 1;
    }
    return left->order < right->order ? -1 : (left->order > right->order ? 1 : 0);
}

// The first address of a link, or where it would be.
size_t first_address(const link_tables& tables, uint32_t link) {
    size_t low = 0;
    size_t high = tables.addresses.count();
    while (low < high) {
        const size_t middle = low + (high - low) / 2;
        if (tables.addresses[middle].link < link) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return low;
}

// Appends what fits of a text at `used`, in front of the NUL; returns where the text ends then.
size_t append(char text[address_line_size], size_t used, const char* piece) {
    const size_t length = strnlen(piece, address_line_size - 1 - used);
    memcpy(text + used, piece, length);
    text[used + length] = '\0';
    return used + length;
}

}  // namespace

int collect_link(link_tables* tables, nlmsghdr* message) {
    link_entry* link = tables->links.place_for_next();
    if (link == nullptr) {
        return -1;
    }
    if (parse_link(message, link)) {
        tables->links.add_last();
    }
    return 0;
}

int collect_address(link_tables* tables, nlmsghdr* message) {
    address_entry* address = tables->addresses.place_for_next();
    if (address == nullptr) {
        return -1;
    }
    if (parse_address(message, address)) {
        address->order = static_cast<uint32_t>(tables->addresses.count());
        tables->addresses.add_last();
    }
    return 0;
}

void sort_addresses(link_tables* tables) {
    tables->addresses.sort(compare_addresses);
}

void print_selected_addrinfo(const link_tables& tables, uint32_t link,
                             char text[address_line_size]) {
    size_t used = 0;
    text[0] = '\0';
    for (size_t i = first_address(tables, link);
         i < tables.addresses.count() && tables.addresses[i].link == link; ++i) {
        used = append(text, used, used == 0 ? "" : " ");
        used = append(text, used, tables.addresses[i].text);
    }
}

}  // namespace tarnnet
