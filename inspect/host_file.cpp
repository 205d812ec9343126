#include "inspect/host_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <cerrno>

#include "kiln/files.h"

namespace {

// Who wants a file to be nothing links it to the null device; service managers do the same.
bool is_null_device(const struct stat& info) {
    constexpr unsigned memory_devices = 1;
    constexpr unsigned null = 3;
    return S_ISCHR(info.st_mode) && info.st_rdev == makedev(memory_devices, null);
}

// 0, or why the file is not one to read to its end.
int refusal(int fd) {
    struct stat info {};
    if (fstat(fd, &info) != 0) {
        return errno;
    }
    const bool has_an_end = S_ISREG(info.st_mode) || S_ISDIR(info.st_mode) || is_null_device(info);
    return has_an_end ? 0 : EOPNOTSUPP;
}

}  // namespace

int read_host_file(const std::string& path, std::string& out) {
    // At once: to open a FIFO is to wait already.
    const Kiln::Descriptor file = Kiln::open_at_once(path, O_RDONLY);
    if (!file) {
        return errno;
    }
    if (const int error = refusal(file.get())) {
        return error;
    }
    out.clear();
    return Kiln::append_rest(file.get(), out);
}
