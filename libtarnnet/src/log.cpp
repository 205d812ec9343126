#include "log.h"

#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stddef.h>
#include <stdio.h>
#include <time.h>
#include <unistd.h>

#include "owners.h"
#include "state.h"
#include "tarnnet.h"

namespace tarnnet {

namespace {

constexpr mode_t log_mode = 0644;
constexpr size_t message_size = 1024;
constexpr size_t stamp_size = 3 * 21 + 1;  // three numbers with their tabs, and the newline

// A line goes out in one piece, so that those of several processes do not mix, unless the file
// system takes less of it.
void write_whole(int fd, const char* text, size_t length) {
    while (length > 0) {
        const ssize_t written = TEMP_FAILURE_RETRY(write(fd, text, length));
        if (written <= 0) {
            return;
        }
        text += written;
        length -= static_cast<size_t>(written);
    }
}

// Opened for each line: who moves the log away to keep it small need not tell anybody. A pipe in
// the log's place is neither waited for nor written to.
void append_line(const char* message) {
    constexpr int flags = O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    const owned_fd fd(
        static_cast<int>(TEMP_FAILURE_RETRY(open(state.host.log_file, flags, log_mode))));
    if (!fd.is_open() || !fd.is_regular_file()) {
        return;
    }
    char line[stamp_size + message_size];
    const int length =
        snprintf(line, sizeof(line), "%ld\t%ld\t%ld\t%s\n", static_cast<long>(time(nullptr)),
                 static_cast<long>(getpid()), static_cast<long>(getppid()), message);
    if (length > 0) {
        write_whole(fd.get(), line, static_cast<size_t>(length));
    }
}

}  // namespace

void tarnnetlog(const char* format, ...) {
    if (state.log_off.load(std::memory_order_relaxed)) {
        return;
    }
    const int saved_errno = errno;
    char message[message_size] = "";
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(message, sizeof(message), format, arguments);
    va_end(arguments);
    append_line(message);
    errno = saved_errno;
}

}  // namespace tarnnet

void tarnnet_set_log(int on) {
    tarnnet::state.log_off.store(on == 0, std::memory_order_relaxed);
}
