#include "plan/record/record_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "kiln/files.h"

namespace {

constexpr mode_t file_mode = 0600;

// A pipe or a device must neither hold us up nor notice us.
constexpr int open_flags = O_RDWR | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;

Kiln::Reason reason(const std::string& path, const std::string& text) {
    return {path + ": " + text};
}

Kiln::Reason open_reason(const std::string& path) {
    switch (errno) {
        case ELOOP:
            return reason(path, "this is a link");
        case EEXIST:
            return reason(path, "File exists: --append goes on with it, --force replaces it");
        default:
            return reason(path, std::strerror(errno));
    }
}

Kiln::Reason complaint(const char* what) {
    return {std::string(what) + ": " + std::strerror(errno)};
}

// Whether the open file can hold a recording of ours that nobody else has a hand in.
Kiln::Done check_kind(int fd) {
    struct stat info {};
    if (fstat(fd, &info) != 0) {
        return Kiln::Reason{std::strerror(errno)};
    }
    if (!S_ISREG(info.st_mode)) {
        return Kiln::Reason{"this is no regular file"};
    }
    if (info.st_nlink > 1) {
        return Kiln::Reason{"the file has a second name"};
    }
    if (info.st_uid != geteuid()) {
        return Kiln::Reason{"the file belongs to user " + std::to_string(info.st_uid)};
    }
    if ((info.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        return Kiln::Reason{"others may write the file"};
    }
    return {};
}

// A lock that no child inherits: one that outlives us must not keep others out.
Kiln::Done lock(int fd) {
    struct flock whole = {};
    whole.l_type = F_WRLCK;
    whole.l_whence = SEEK_SET;
    if (fcntl(fd, F_SETLK, &whole) == 0) {
        return {};
    }
    const bool is_taken = errno == EACCES || errno == EAGAIN;
    return is_taken ? Kiln::Reason{"somebody is recording into it"}
                    : complaint("it cannot be locked");
}

// Waits until the file's name is on the disk. A file system that cannot tell is believed.
void sync_folder(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    const Kiln::Descriptor fd(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (fd) {
        fsync(fd.get());
    }
}

// A file system that has nothing to wait for says EINVAL.
bool wait_for_disk(int fd) {
    return TEMP_FAILURE_RETRY(fdatasync(fd)) == 0 || errno == EINVAL;
}

}  // namespace

RecordFile::RecordFile(Kiln::Descriptor fd, std::string path)
    : fd_(std::move(fd)), path_(std::move(path)) {
    const off_t end = lseek(fd_.get(), 0, SEEK_END);
    end_ = size_ = end > 0 ? static_cast<std::uint64_t>(end) : 0;
}

Kiln::Result<RecordFile> RecordFile::open(const std::string& path, Existing existing) {
    Kiln::Descriptor fd(-1);
    if (existing != Existing::refuse) {
        fd.reset(::open(path.c_str(), open_flags));
    }
    const bool made = !fd && (existing == Existing::refuse || errno == ENOENT);
    if (made) {
        fd.reset(::open(path.c_str(), open_flags | O_CREAT | O_EXCL, file_mode));
    }
    if (!fd) {
        return open_reason(path);
    }
    for (const auto check : {check_kind, lock}) {
        if (const Kiln::Done good = check(fd.get()); !good) {
            return reason(path, good.reason());
        }
    }
    if (made) {
        sync_folder(path);
    }
    RecordFile file(std::move(fd), path);
    if (existing == Existing::replace) {
        if (const Kiln::Done emptied = file.cut(0); !emptied) {
            return reason(path, emptied.reason());
        }
    }
    return file;
}

Kiln::Result<std::string> RecordFile::read() {
    std::string text;
    const bool at_begin = lseek(fd_.get(), 0, SEEK_SET) == 0;
    if (const int error = at_begin ? Kiln::append_rest(fd_.get(), text) : errno) {
        return Kiln::Reason{std::string("it cannot be read: ") + std::strerror(error)};
    }
    return text;
}

Kiln::Done RecordFile::append(std::string_view lines) {
    if (end_ != size_) {
        if (const Kiln::Done mended = cut(size_); !mended) {
            return Kiln::Reason{mended.reason()};
        }
    }
    if (Kiln::write_all(fd_.get(), lines.data(), lines.size()) == 0 && wait_for_disk(fd_.get())) {
        end_ = size_ += lines.size();
        return {};
    }
    const Kiln::Reason trouble = complaint("it cannot be written");
    struct stat info {};
    if (!cut(size_) && fstat(fd_.get(), &info) == 0) {
        end_ = static_cast<std::uint64_t>(info.st_size);
    }
    return trouble;
}

Kiln::Done RecordFile::cut(std::uint64_t size) {
    const auto end = static_cast<off_t>(size);
    if (ftruncate(fd_.get(), end) != 0 || lseek(fd_.get(), end, SEEK_SET) != end) {
        return complaint("it cannot be cut");
    }
    end_ = size_ = size;
    return {};
}

Kiln::Done RecordFile::check_untouched() const {
    struct stat ours {};
    struct stat there {};
    if (fstat(fd_.get(), &ours) != 0) {
        return complaint("it cannot be looked at");
    }
    if (ours.st_nlink == 0) {
        return Kiln::Reason{"the file was removed"};
    }
    if (lstat(path_.c_str(), &there) != 0 || there.st_ino != ours.st_ino ||
        there.st_dev != ours.st_dev) {
        return Kiln::Reason{"the file was renamed, or another one stands in its place"};
    }
    if (static_cast<std::uint64_t>(ours.st_size) != end_) {
        return Kiln::Reason{"somebody else has changed the file"};
    }
    return {};
}
