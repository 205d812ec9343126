// The messages of one netlink answer, collected in the order of their arrival.
#pragma once

#include <linux/netlink.h>
#include <stddef.h>

// Zero-initialised it is an empty list.
struct message_list {
    unsigned char* bytes;  // the messages, each at its alignment
    size_t used;
    size_t room;
    size_t count;
};

// Appends a copy of a message; 0, or -1 when memory is short (the list is as before then).
int add_message(struct message_list* list, const struct nlmsghdr* message);

// The first message, or NULL, and the one that follows. Valid until the list changes.
struct nlmsghdr* first_message(const struct message_list* list);
struct nlmsghdr* next_message(const struct message_list* list, const struct nlmsghdr* message);

// Frees the messages and leaves an empty list.
void free_messages(struct message_list* list);
