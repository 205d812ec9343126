#include "text.h"

#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <unistd.h>

namespace tarnnet {

namespace {

constexpr size_t first_room = 4096;  // bytes for a file, doubled as needed

bool grow(owned_text* text, size_t size) {
    char* old = text->release();
    auto* grown = static_cast<char*>(realloc(old, size));
    text->reset(grown != nullptr ? grown : old);
    return grown != nullptr;
}

// The whole of a file with a NUL behind it, or nothing.
owned_text read_whole(int fd, size_t* length) {
    owned_text text;
    *length = 0;
    for (size_t room = first_room; grow(&text, room); room *= 2) {
        while (*length + 1 < room) {
            const ssize_t count =
                TEMP_FAILURE_RETRY(read(fd, text.get() + *length, room - 1 - *length));
            if (count < 0) {
                return owned_text();
            }
            if (count == 0) {
                text.get()[*length] = '\0';
                return text;
            }
            *length += static_cast<size_t>(count);
        }
    }
    return owned_text();
}

}  // namespace

void copy_cut(char* field, size_t size, const char* text) {
    const size_t length = strnlen(text, size - 1);
    memcpy(field, text, length);
    field[length] = '\0';
}

bool copy_text(char** to, const char* from) {
    *to = from == nullptr ? nullptr : strdup(from);
    return from == nullptr || *to != nullptr;
}

bool has_prefix(const char* text, const char* prefix) {
    return strncmp(text, prefix, strlen(prefix)) == 0;
}

bool is_space(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

uint32_t decimal(const char* text) {
    return static_cast<uint32_t>(strtoul(text, nullptr, 10));
}

text_file::text_file(const char* path) {
    // A pipe in a file's place is neither waited for here nor read later.
    constexpr int flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    const owned_fd fd(static_cast<int>(TEMP_FAILURE_RETRY(open(path, flags))));
    size_t length = 0;
    if (fd.is_open() && fd.is_regular_file()) {
        text_ = read_whole(fd.get(), &length);
    }
    if (text_) {
        next_ = text_.get();
        end_ = next_ + length;
        kept_ = *next_;
    }
}

char* text_file::next_line(size_t most) {
    if (next_ == end_) {
        return nullptr;
    }
    *next_ = kept_;  // the line given last ended here
    char* line = next_;
    const auto left = static_cast<size_t>(end_ - line);
    const size_t longest = left < most ? left : most;
    auto* newline = static_cast<char*>(memchr(line, '\n', longest));
    next_ = newline == nullptr ? line + longest : newline + 1;
    kept_ = *next_;
    *next_ = '\0';
    return line;
}

}  // namespace tarnnet
