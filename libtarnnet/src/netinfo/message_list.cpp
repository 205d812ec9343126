#include "netinfo/message_list.h"

#include <stdlib.h>
#include <string.h>

namespace {

const size_t first_room = 65536;  // bytes, more than a datagram

size_t aligned(size_t length) {
    return (length + NLMSG_ALIGNTO - 1) & ~(size_t{NLMSG_ALIGNTO} - 1);
}

int reserve(struct message_list* list, size_t length) {
    size_t room = list->room == 0 ? first_room : list->room;
    while (room - list->used < length) {
        room *= 2;
    }
    if (room == list->room) {
        return 0;
    }
    void* grown = realloc(list->bytes, room);
    if (grown == nullptr) {
        return -1;
    }
    list->bytes = static_cast<unsigned char*>(grown);
    list->room = room;
    return 0;
}

struct nlmsghdr* message_at(const struct message_list* list, size_t offset) {
    if (offset >= list->used) {
        return nullptr;
    }
    return static_cast<struct nlmsghdr*>(static_cast<void*>(list->bytes + offset));
}

}  // namespace

int add_message(struct message_list* list, const struct nlmsghdr* message) {
    const size_t length = aligned(message->nlmsg_len);
    if (reserve(list, length) != 0) {
        return -1;
    }
    memcpy(list->bytes + list->used, message, message->nlmsg_len);
    list->used += length;
    list->count++;
    return 0;
}

struct nlmsghdr* first_message(const struct message_list* list) {
    return message_at(list, 0);
}

struct nlmsghdr* next_message(const struct message_list* list, const struct nlmsghdr* message) {
    const auto* position = static_cast<const unsigned char*>(static_cast<const void*>(message));
    return message_at(list,
                      static_cast<size_t>(position - list->bytes) + aligned(message->nlmsg_len));
}

void free_messages(struct message_list* list) {
    free(list->bytes);
    *list = {};
}
