#include "netinfo/link_tables.h"

#include <stdlib.h>
#include <string.h>

namespace {

const size_t first_room = 64;  // entries

// Makes room for one more entry; 0, or -1 with the table as it was.
template <class Entry>
int reserve_entry(Entry** entries, size_t count, size_t* room) {
    if (count < *room) {
        return 0;
    }
    const size_t wanted = *room == 0 ? first_room : 2 * *room;
    auto* grown = static_cast<Entry*>(realloc(*entries, wanted * sizeof(Entry)));
    if (grown == nullptr) {
        return -1;
    }
    *entries = grown;
    *room = wanted;
    return 0;
}

int compare_addresses(const void* a, const void* b) {
    const auto* left = static_cast<const struct address_entry*>(a);
    const auto* right = static_cast<const struct address_entry*>(b);
    if (left->link != right->link) {
        return left->link < right->link ? -1 : 1;
    }
    return left->order < right->order ? -1 : (left->order > right->order ? 1 : 0);
}

// The first address of a link, or where it would be.
size_t first_address(const struct link_tables* tables, uint32_t link) {
    size_t low = 0;
    size_t high = tables->address_count;
    while (low < high) {
        const size_t middle = low + (high - low) / 2;
        if (tables->addresses[middle].link < link) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return low;
}

// Appends what fits of a text at `used`, in front of the NUL; returns where the text ends then.
size_t append(char text[ADDRESSES_SIZE], size_t used, const char* piece) {
    const size_t length = strnlen(piece, ADDRESSES_SIZE - 1 - used);
    memcpy(text + used, piece, length);
    text[used + length] = '\0';
    return used + length;
}

}  // namespace

int collect_link(struct link_tables* tables, struct nlmsghdr* message) {
    if (reserve_entry(&tables->links, tables->link_count, &tables->link_room) != 0) {
        return -1;
    }
    if (parse_link(message, &tables->links[tables->link_count])) {
        tables->link_count++;
    }
    return 0;
}

int collect_address(struct link_tables* tables, struct nlmsghdr* message) {
    if (reserve_entry(&tables->addresses, tables->address_count, &tables->address_room) != 0) {
        return -1;
    }
    struct address_entry* address = &tables->addresses[tables->address_count];
    if (parse_address(message, address)) {
        address->order = static_cast<uint32_t>(tables->address_count);
        tables->address_count++;
    }
    return 0;
}

void sort_addresses(struct link_tables* tables) {
    if (tables->address_count > 0) {
        qsort(tables->addresses, tables->address_count, sizeof(struct address_entry),
              compare_addresses);
    }
}

void print_selected_addrinfo(const struct link_tables* tables, uint32_t link,
                             char text[ADDRESSES_SIZE]) {
    size_t used = 0;
    text[0] = '\0';
    for (size_t i = first_address(tables, link);
         i < tables->address_count && tables->addresses[i].link == link; ++i) {
        used = append(text, used, used == 0 ? "" : " ");
        used = append(text, used, tables->addresses[i].text);
    }
}

void free_link_tables(struct link_tables* tables) {
    free(tables->links);
    free(tables->addresses);
    *tables = {};
}
