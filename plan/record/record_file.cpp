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
    return Kiln::Reason{path + ": " + text};
}

Kiln::Reason system_reason(const std::string& path) {
    return reason(path, errno == ELOOP ? "this is a link" : std::strerror(errno));
}

// Why the open file cannot hold a recording, or an empty text.
std::string objection(int fd) {
    struct stat info {};
    if (fstat(fd, &info) != 0) {
        return std::strerror(errno);
    }
    if (!S_ISREG(info.st_mode)) {
        return "this is no regular file";
    }
    return info.st_nlink > 1 ? "the file has a second name" : "";
}

std::string complaint(const char* what) {
    return std::string(what) + ": " + std::strerror(errno);
}

// A lock that no child inherits: one that outlives us must not keep others out.
bool lock(int fd) {
    struct flock whole = {};
    whole.l_type = F_WRLCK;
    whole.l_whence = SEEK_SET;
    return fcntl(fd, F_SETLK, &whole) == 0;
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

}  // namespace

RecordFile::RecordFile(Kiln::Descriptor fd) : fd_(std::move(fd)) {
    const off_t end = lseek(fd_.get(), 0, SEEK_END);
    size_ = end > 0 ? static_cast<std::uint64_t>(end) : 0;
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
        return system_reason(path);
    }
    const std::string trouble = objection(fd.get());
    if (!trouble.empty()) {
        return reason(path, trouble);
    }
    if (!lock(fd.get())) {
        return reason(path, "somebody is recording into it");
    }
    if (made) {
        sync_folder(path);
    }
    RecordFile file(std::move(fd));
    if (existing == Existing::replace) {
        const std::string failed = file.cut(0);
        if (!failed.empty()) {
            return reason(path, failed);
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
    size_ = text.size();
    return text;
}

std::string RecordFile::append(std::string_view lines) {
    if (Kiln::write_all(fd_.get(), lines.data(), lines.size()) != 0 || fdatasync(fd_.get()) != 0) {
        const std::string trouble = complaint("it cannot be written");
        static_cast<void>(cut(size_));
        return trouble;
    }
    size_ += lines.size();
    return {};
}

std::string RecordFile::cut(std::uint64_t size) {
    const auto end = static_cast<off_t>(size);
    if (ftruncate(fd_.get(), end) != 0 || lseek(fd_.get(), end, SEEK_SET) != end) {
        return complaint("it cannot be cut");
    }
    size_ = size;
    return {};
}
