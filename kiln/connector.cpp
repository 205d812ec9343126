#include "kiln/connector.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "kiln/files.h"

namespace Kiln {

namespace {

constexpr std::size_t chunk_size = 4096;  // the most that one process() moves

// What process() returns.
constexpr long keep_entry = 1;
constexpr long close_entry = 0;

}  // namespace

// Keeps what there is room for. Returns false once the buffer is full, even if nothing was dropped.
bool CtoDynaBuf::store(const char* chunk, std::size_t size) {
    const std::uint64_t room = max_size > buffer.size() ? max_size - buffer.size() : 0;
    const bool fits = room > size;
    buffer.append(chunk, fits ? size : static_cast<std::size_t>(room));
    return fits;
}

void CtoDynaBuf::copy_to_tee(const char* chunk, std::size_t size) {
    if (tee_fd < 0 || write_all(tee_fd, chunk, size) == 0) {
        return;
    }
    close(tee_fd);
    tee_fd = -1;
}

long CtoDynaBuf::process() {
    char chunk[chunk_size];
    const ssize_t count = read(pfd->fd, chunk, sizeof chunk);
    if (count < 0) {
        // EAGAIN ends it too: only an entry that is ready is asked.
        return errno == EINTR ? keep_entry : -errno;
    }
    if (count > 0) {
        const auto size = static_cast<std::size_t>(count);
        if (!store(chunk, size) && !keep_draining) {
            return close_entry;  // and the copy goes without this chunk
        }
        copy_to_tee(chunk, size);
    }
    return count;
}

long CfromStaticBuf::process() {
    // From the start of the area each time, not from `written` on: that is the class's contract.
    const ssize_t count = write(pfd->fd, data, std::min(chunk_size, size - written));
    if (count < 0 && errno != EINTR) {
        return -errno;
    }
    if (count > 0) {
        written += static_cast<std::uint32_t>(count);
    }
    return size > written ? keep_entry : close_entry;
}

}  // namespace Kiln
