// Owners of what the C library hands out: each gives its thing back once, when it goes out of
// scope. They are moved, never copied.
#pragma once

#include <dirent.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tarnnet {

class owned_fd {
public:
    explicit owned_fd(int fd) : fd_(fd) {}
    owned_fd(owned_fd&& other) noexcept : fd_(other.release()) {}
    owned_fd& operator=(owned_fd&&) = delete;
    ~owned_fd() { reset(); }

    bool is_open() const { return fd_ >= 0; }
    int get() const { return fd_; }

    bool is_regular_file() const {
        struct stat status;
        return fstat(fd_, &status) == 0 && S_ISREG(status.st_mode);
    }

    // The descriptor, which is the caller's to close from now on.
    int release() {
        const int fd = fd_;
        fd_ = -1;
        return fd;
    }

    void reset() {
        if (fd_ >= 0) {
            close(release());
        }
    }

private:
    int fd_;
};

// Something behind a pointer, or nothing.
template <class Thing, void (*give_back)(Thing*)>
class owned {
public:
    explicit owned(Thing* thing = nullptr) : thing_(thing) {}
    owned(owned&& other) noexcept : thing_(other.release()) {}
    owned& operator=(owned&& other) noexcept {
        reset(other.release());
        return *this;
    }
    ~owned() { reset(nullptr); }

    Thing* get() const { return thing_; }
    Thing* operator->() const { return thing_; }
    explicit operator bool() const { return thing_ != nullptr; }

    Thing* release() {
        Thing* thing = thing_;
        thing_ = nullptr;
        return thing;
    }

    void reset(Thing* thing) {
        if (thing_ != nullptr) {
            give_back(thing_);
        }
        thing_ = thing;
    }

private:
    Thing* thing_;
};

inline void free_text(char* text) {
    free(text);
}

inline void free_bytes(unsigned char* bytes) {
    free(bytes);
}

inline void close_file(FILE* file) {
    fclose(file);
}

// A string, or a buffer, from malloc().
using owned_text = owned<char, free_text>;
using owned_bytes = owned<unsigned char, free_bytes>;
using owned_file = owned<FILE, close_file>;

// The names in a directory in alphabetical order, "." and ".." among them. A directory that cannot
// be read to its end has none.
class dir_listing {
public:
    explicit dir_listing(const char* path) : count_(scandir(path, &entries_, nullptr, alphasort)) {}
    dir_listing(dir_listing&&) = delete;
    ~dir_listing() {
        for (int i = 0; i < count_; ++i) {
            free(entries_[i]);
        }
        free(entries_);
    }

    int count() const { return count_ < 0 ? 0 : count_; }
    const char* name(int i) const { return entries_[i]->d_name; }

private:
    dirent** entries_ = nullptr;
    int count_;
};

// An array that grows at its end. Entries are plain bytes: moved by copying, freed as they are.
template <class Entry>
class growing_array {
public:
    growing_array() = default;
    growing_array(growing_array&&) = delete;
    ~growing_array() { free(entries_); }

    size_t count() const { return count_; }
    Entry& operator[](size_t i) { return entries_[i]; }
    const Entry& operator[](size_t i) const { return entries_[i]; }

    // A place behind the last entry, or null when memory is short. add_last() makes what was
    // written there an entry.
    Entry* place_for_next() { return count_ < room_ || grow() ? entries_ + count_ : nullptr; }
    void add_last() { ++count_; }

    void sort(int (*compare)(const void* a, const void* b)) {
        if (count_ > 0) {
            qsort(entries_, count_, sizeof(Entry), compare);
        }
    }

private:
    bool grow() {
        const size_t room = room_ == 0 ? 64 : 2 * room_;
        auto* grown = static_cast<Entry*>(realloc(entries_, room * sizeof(Entry)));
        if (grown == nullptr) {
            return false;
        }
        entries_ = grown;
        room_ = room;
        return true;
    }

    Entry* entries_ = nullptr;
    size_t count_ = 0;
    size_t room_ = 0;
};

}  // namespace tarnnet
