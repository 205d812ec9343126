#include "kiln/close_descriptors.h"

#include <sys/syscall.h>
#include <unistd.h>

#include "kiln/numbers.h"
#include "kiln/owners.h"

namespace Kiln {

namespace {

// Fails on kernels before 5.9 and where a filter refuses the call. The C library has no wrapper for
// it on the oldest systems that the program runs on.
bool close_range_from(int first) {
#ifdef SYS_close_range
    return syscall(SYS_close_range, static_cast<unsigned>(first), ~0U, 0U) == 0;
#else
    static_cast<void>(first);
    return false;
#endif
}

void close_up_to_limit(int first) {
    const long limit = sysconf(_SC_OPEN_MAX);
    for (int fd = first; fd < limit; ++fd) {
        close(fd);
    }
}

}  // namespace

void close_descriptors_one_by_one(int first, const char* listing) {
    const Directory directory(opendir(listing));
    if (directory == nullptr) {
        close_up_to_limit(first);
        return;
    }
    // The listing goes by rising numbers, so closing what it has named does not disturb it.
    while (const dirent* entry = readdir(directory.get())) {
        const int fd = leading_int(entry->d_name);
        if (fd >= first && fd != dirfd(directory.get())) {
            close(fd);
        }
    }
}

void close_descriptors_from(int first, const char* listing) {
    if (!close_range_from(first)) {
        close_descriptors_one_by_one(first, listing);
    }
}

}  // namespace Kiln
