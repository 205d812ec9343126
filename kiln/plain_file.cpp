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

PlainFile failed(int error) {
    PlainFile file;
    file.error = error;
    file.trouble = std::strerror(error);
    return file;
}

// The trouble with what was looked at.
PlainFile judged(const struct stat& info, const struct statfs& system) {
    PlainFile file;
    file.is_pipe = S_ISFIFO(info.st_mode) && system.f_type == PIPEFS_MAGIC;
    file.size = static_cast<std::uint64_t>(std::max<off_t>(info.st_size, 0));
    if (!S_ISREG(info.st_mode) && !file.is_pipe) {
        file.trouble = kind_of(info.st_mode);
    }
    return file;
}

PlainFile look_at(const std::string& path) {
    struct stat info = {};
    struct statfs system = {};
    const bool seen = stat(path.c_str(), &info) == 0 && statfs(path.c_str(), &system) == 0;
    return seen ? judged(info, system) : failed(errno);
}

PlainFile look_at(const Descriptor& fd) {
    struct stat info = {};
    struct statfs system = {};
    const bool seen = fstat(fd.get(), &info) == 0 && fstatfs(fd.get(), &system) == 0;
    return seen ? judged(info, system) : failed(errno);
}

}  // namespace

// Looked at before, because to open some devices is to change them; and once more behind it, for
// somebody may have exchanged the file.
PlainFile open_plain_file(const std::string& path) {
    PlainFile file = look_at(path);
    if (!file.trouble.empty()) {
        return file;
    }
    Descriptor fd = open_at_once(path, O_RDONLY);
    if (!fd) {
        return failed(errno);
    }
    file = look_at(fd);
    if (!file.trouble.empty()) {
        return file;
    }
    // Who writes into a pipe may take their time.
    if (file.is_pipe && fcntl(fd.get(), F_SETFL, 0) != 0) {
        return failed(errno);
    }
    file.fd = std::move(fd);
    return file;
}

PlainText read_plain_file(const std::string& path, std::size_t most_bytes) {
    PlainFile file = open_plain_file(path);
    PlainText read;
    read.error = file.error;
    read.trouble = std::move(file.trouble);
    if (!file.fd) {
        return read;
    }
    read.text.resize(most_bytes + 1);
    std::size_t size = 0;
    while (size <= most_bytes) {
        const ssize_t count = read_some(file.fd.get(), &read.text[size], read.text.size() - size);
        if (count < 0) {
            const int error = errno;
            return {{}, false, error, std::strerror(error)};
        }
        if (count == 0) {
            break;
        }
        size += static_cast<std::size_t>(count);
    }
    read.cut = size > most_bytes;
    read.text.resize(std::min(size, most_bytes));
    return read;
}

}  // namespace Kiln
