#include "kiln/files.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace Kiln {

namespace {

constexpr std::size_t piece_size = 65536;

Descriptor open_patiently(int folder_fd, const std::string& path, int flags, mode_t mode) {
    const int all_flags = flags | O_CLOEXEC | O_NOCTTY;
    return Descriptor(
        static_cast<int>(TEMP_FAILURE_RETRY(openat(folder_fd, path.c_str(), all_flags, mode))));
}

}  // namespace

Descriptor open_at_once(const std::string& path, int flags, mode_t mode) {
    return open_at_once(AT_FDCWD, path, flags, mode);
}

Descriptor open_at_once(int folder_fd, const std::string& path, int flags, mode_t mode) {
    return open_patiently(folder_fd, path, flags | O_NONBLOCK, mode);
}

ssize_t read_some(int fd, char* into, std::size_t size) {
    return TEMP_FAILURE_RETRY(read(fd, into, size));
}

int append_rest(int fd, std::string& out) {
    char piece[piece_size];
    ssize_t count = 0;
    while ((count = read_some(fd, piece, sizeof piece)) > 0) {
        out.append(piece, static_cast<std::size_t>(count));
    }
    return count == 0 ? 0 : errno;
}

int get_file(const std::string& path, std::string& out) {
    const Descriptor file = open_patiently(AT_FDCWD, path, O_RDONLY, 0);
    if (!file) {
        return errno;
    }
    out.clear();
    return append_rest(file.get(), out);
}

int setFDNonblock(int fd) {
    const int flags = fcntl(fd, F_GETFL);
    if (flags == -1) {
        return -1;
    }
    return fcntl(fd, F_SETFL, flags | O_NONBLOCK);
}

std::size_t write_all(int fd, const char* data, std::size_t size) {
    while (size > 0) {
        const ssize_t count = TEMP_FAILURE_RETRY(write(fd, data, size));
        if (count <= 0) {
            if (count == 0) {
                errno = EIO;  // a device that takes nothing would keep us here for ever
            }
            return size;
        }
        data += count;
        size -= static_cast<std::size_t>(count);
    }
    return 0;
}

}  // namespace Kiln
