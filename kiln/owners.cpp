#include "kiln/owners.h"

#include <cerrno>

namespace Kiln {

void Descriptor::reset(int fd) noexcept {
    const int old = std::exchange(fd_, fd);
    if (old >= 0) {
        const int saved_errno = errno;
        close(old);
        errno = saved_errno;
    }
}

}  // namespace Kiln
