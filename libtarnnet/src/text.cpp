#include "text.h"

#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <unistd.h>

void copy_cut(char* field, size_t size, const char* text) {
    const size_t length = strnlen(text, size - 1);
    memcpy(field, text, length);
    field[length] = '\0';
}

bool has_prefix(const char* text, const char* prefix) {
    return strncmp(text, prefix, strlen(prefix)) == 0;
}

bool is_space(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

FILE* open_text_file(const char* path) {
    int fd = -1;
    do {
        fd = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    } while (fd < 0 && errno == EINTR);
    if (fd < 0) {
        return nullptr;
    }
    FILE* file = fdopen(fd, "r");
    if (file == nullptr) {
        const int saved_errno = errno;
        close(fd);
        errno = saved_errno;
    }
    return file;
}
