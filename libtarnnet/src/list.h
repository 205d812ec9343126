// Circular doubly linked lists. An entry has a list_node named `node` as its first member; the head
// is a node of its own.
#pragma once

#include <stddef.h>
#include <stdlib.h>

struct list_node {
    struct list_node* prev;
    struct list_node* next;
};

inline void list_init(struct list_node* head) {
    head->prev = head;
    head->next = head;
}

inline bool list_empty(const struct list_node* head) {
    return head->next == head;
}

inline void list_add_head(struct list_node* head, struct list_node* node) {
    node->prev = head;
    node->next = head->next;
    head->next->prev = node;
    head->next = node;
}

// The entry of a node that is not a head.
template <class Entry>
Entry* list_entry(struct list_node* node) {
    static_assert(offsetof(Entry, node) == 0, "the node comes first");
    return reinterpret_cast<Entry*>(node);
}

// The first entry that `accepts(entry)`, or null.
template <class Entry, class Accepts>
Entry* list_find(struct list_node* head, Accepts accepts) {
    for (struct list_node* node = head->next; node != head; node = node->next) {
        auto* entry = list_entry<Entry>(node);
        if (accepts(entry)) {
            return entry;
        }
    }
    return nullptr;
}

// Empties the list and hands every entry to `release`, which frees it.
template <class Entry, class Release>
void list_flush(struct list_node* head, Release release) {
    struct list_node* node = head->next;
    list_init(head);
    while (node != head) {
        struct list_node* next = node->next;
        release(list_entry<Entry>(node));
        node = next;
    }
}
