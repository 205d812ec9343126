#include "netinfo/link_tables.h"

#include <string.h>

#include <algorithm>

namespace tarnnet {

namespace {

// By link, and for one link by arrival. That makes every two entries differ, so that an order which
// is not stable will do; std::stable_sort() takes its memory by operator new, which is not there.
bool comes_before(const address_entry& left, const address_entry& right) {
    return left.link != right.link ? left.link < right.link : left.order < right.order;
}

bool is_of_earlier_link(const address_entry& address, uint32_t link) {
    return address.link < link;
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
    // What is to be ignored leaves the place for the next one.
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
    std::sort(tables->addresses.begin(), tables->addresses.end(), comes_before);
}

void print_selected_addrinfo(const link_tables& tables, uint32_t link,
                             char text[address_line_size]) {
    size_t used = 0;
    text[0] = '\0';
    const address_entry* end = tables.addresses.end();
    const address_entry* address =
        std::lower_bound(tables.addresses.begin(), end, link, is_of_earlier_link);
    for (; address != end && address->link == link; ++address) {
        used = append(text, used, used == 0 ? "" : " ");
        used = append(text, used, address->text);
    }
}

}  // namespace tarnnet
