// Owners of what the C library hands out: each gives its thing back once, when it goes out of
// scope. They are moved, never copied. Of the C++ library they take what is all header: no function
// of it is called at run time.
#pragma once

#include <dirent.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>

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

struct by_free {
    void operator()(void* memory) const { free(memory); }
};

struct by_fclose {
    void operator()(FILE* file) const { fclose(file); }
};

// A string, or a buffer, from malloc().
using owned_text = std::unique_ptr<char, by_free>;
using owned_bytes = std::unique_ptr<unsigned char, by_free>;
using owned_file = std::unique_ptr<FILE, by_fclose>;

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
    const Entry& operator[](size_t i) const { return entries_[i]; }
    Entry* begin() { return entries_; }
    Entry* end() { return entries_ + count_; }
    const Entry* begin() const { return entries_; }
    const Entry* end() const { return entries_ + count_; }

    // A place behind the last entry, or null when memory is short. add_last() makes what was
    // written there an entry.
    Entry* place_for_next() { return count_ < room_ || grow() ? entries_ + count_ : nullptr; }
    void add_last() { ++count_; }

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
