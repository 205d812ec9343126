#include "kiln/plain_file.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/statfs.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "kiln/files.h"

namespace Kiln {

namespace {

const char* kind_of(mode_t mode) {
    switch (mode & S_IFMT) {
        case S_IFDIR:
            return "it is a folder";
        case S_IFIFO:
            return "it is a FIFO";
        case S_IFSOCK:
            return "it is a socket";
        default:
            return "it is a device";
    }
}

// Of what the system has told, or not.
Result<PlainFile> judged(bool told, const struct stat& info, const struct statfs& system) {
    if (!told) {
        return Reason{std::strerror(errno)};
    }
    PlainFile file;
    file.is_pipe = S_ISFIFO(info.st_mode) && system.f_type == PIPEFS_MAGIC;
    file.size = static_cast<std::uint64_t>(std::max<off_t>(info.st_size, 0));
    if (!S_ISREG(info.st_mode) && !file.is_pipe) {
        errno = 0;
        return Reason{kind_of(info.st_mode)};
    }
    return file;
}

Result<PlainFile> look_at(const std::string& path) {
    struct stat info = {};
    struct statfs system = {};
    const bool told = stat(path.c_str(), &info) == 0 && statfs(path.c_str(), &system) == 0;
    return judged(told, info, system);
}

Result<PlainFile> look_at(int fd) {
    struct stat info = {};
    struct statfs system = {};
    return judged(fstat(fd, &info) == 0 && fstatfs(fd, &system) == 0, info, system);
}

}  // namespace

// Looked at before, because to open some devices is to change them; and once more behind it, for
// somebody may have exchanged the file.
Result<PlainFile> open_plain_file(const std::string& path) {
    Result<PlainFile> file = look_at(path);
    if (!file) {
        return file;
    }
    Descriptor fd = open_at_once(path, O_RDONLY);
    if (!fd) {
        return Reason{std::strerror(errno)};
    }
    file = look_at(fd.get());
    // Who writes into a pipe may take their time.
    if (file && file->is_pipe && fcntl(fd.get(), F_SETFL, 0) != 0) {
        return Reason{std::strerror(errno)};
    }
    if (file) {
        file->fd = std::move(fd);
    }
    return file;
}

Result<PlainText> read_plain_file(const std::string& path, std::size_t most_bytes) {
    const Result<PlainFile> file = open_plain_file(path);
    if (!file) {
        return Reason{file.reason()};
    }
    PlainText read;
    read.text.resize(most_bytes + 1);
    std::size_t size = 0;
    ssize_t count = 1;
    while (size <= most_bytes && count > 0) {
        count = read_some(file->fd.get(), &read.text[size], read.text.size() - size);
        if (count < 0) {
            return Reason{std::strerror(errno)};
        }
        size += static_cast<std::size_t>(count);
    }
    read.cut = size > most_bytes;
    read.text.resize(std::min(size, most_bytes));
    return read;
}

}  // namespace Kiln
