// Circular doubly linked lists of entries that are made with new.
#pragma once

#include <stddef.h>
#include <stdlib.h>

namespace tarnnet {

struct list_node {
    list_node* prev;
    list_node* next;
};

// What entries derive from. New gives null when memory is short; the C++ library's own operators
// are not there.
struct list_entry : list_node {
    static void* operator new(size_t size) noexcept { return malloc(size); }
    static void operator delete(void* entry) { free(entry); }
};

// Owns its entries, but has no destructor, so that a list may outlive all callers: who holds a list
// for a time ends it with flush().
template <class Entry>
class list {
public:
    class iterator {
    public:
        explicit iterator(list_node* node) : node_(node) {}
        Entry& operator*() const { return *static_cast<Entry*>(node_); }
        iterator& operator++() {
            node_ = node_->next;
            return *this;
        }
        bool operator!=(const iterator& other) const { return node_ != other.node_; }

    private:
        list_node* node_;
    };

    constexpr list() : head_{&head_, &head_} {}
    list(list&&) = delete;

    iterator begin() { return iterator(head_.next); }
    iterator end() { return iterator(&head_); }

    void add_head(Entry* entry) {
        entry->prev = &head_;
        entry->next = head_.next;
        head_.next->prev = entry;
        head_.next = entry;
    }

    // Deletes every entry.
    void flush() {
        while (head_.next != &head_) {
            list_node* node = head_.next;
            head_.next = node->next;
            node->next->prev = &head_;
            delete static_cast<Entry*>(node);
        }
    }

private:
    list_node head_;
};

}  // namespace tarnnet
