// Text, and the files that are read as text.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "owners.h"

namespace tarnnet {

// Copies `text` into `field` of `size` bytes, cut to size - 1 characters, and ends it with a NUL.
void copy_cut(char* field, size_t size, const char* text);

// Duplicates a text that may be null; false when memory is short. *to is the caller's to free.
bool copy_text(char** to, const char* from);

// Whether `text` starts with `prefix`.
bool has_prefix(const char* text, const char* prefix);

// The white space of the C locale, whatever locale the host program runs in.
bool is_space(char c);

// The decimal number that a text starts with, cut to 32 bits; 0 without one.
uint32_t decimal(const char* text);

// A regular file, read whole when it is opened, so that one which fails in the middle counts as one
// that cannot be read. Anything else in its place (a directory, a pipe, a device) is not read, nor
// waited for.
class text_file {
public:
    explicit text_file(const char* path);

    // Whether the file could be opened and read to its end.
    bool is_read() const { return static_cast<bool>(text_); }

    // The next line with its line end, or null behind the last one. Lies in the file's memory, may
    // be changed by the caller, and is gone with the next call. A line of more than `most`
    // characters continues as the next one.
    char* next_line(size_t most = SIZE_MAX);

private:
    owned_text text_;
    char* next_ = nullptr;
    char* end_ = nullptr;
    char kept_ = '\0';  // stood where the line given last was ended
};

}  // namespace tarnnet
