#include "kiln/log.h"

#include <fcntl.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <ctime>

#include "kiln/files.h"

namespace {

constexpr std::size_t message_size = 4096;  // terminator included

char error_buffer[message_size];

// The system's error text goes behind a message only if at least its colon fits.
void append_errno_text(char (&message)[message_size], int length, int errnum) {
    constexpr int longest = static_cast<int>(message_size) - 2;
    if (errnum == 0 || length < 0 || length > longest) {
        return;
    }
    const auto used = static_cast<std::size_t>(length);
    std::snprintf(message + used, message_size - used, ": %s", std::strerror(errnum));
}

const char* prefix_of(int level) {
    return level < 0 ? "Error: " : "";
}

void write_time_stamp(std::FILE* stream) {
    std::fprintf(stream, "%lu ", static_cast<unsigned long>(std::time(nullptr)));
}

// Flushed line by line: who ends without warning has said what was said.
void write_line(std::FILE* stream, int level, const char* message) {
    std::fprintf(stream, "%s%s\n", prefix_of(level), message);
    std::fflush(stream);
}

void write_console(int level, const char* message) {
    if (level > 0) {
        write_time_stamp(stdout);
    }
    write_line(level < 0 ? stderr : stdout, level, message);
}

// Appends, and neither waits for a FIFO's reader nor makes a log that others may write.
Kiln::File open_log(const char* path) {
    Kiln::Descriptor descriptor = Kiln::open_at_once(path, O_WRONLY | O_APPEND | O_CREAT, 0644);
    Kiln::File file(descriptor ? fdopen(descriptor.get(), "a") : nullptr);
    if (file) {
        descriptor.release();
    }
    return file;
}

int exchange(int& setting, int value) {
    const int previous = setting;
    setting = value;
    return previous;
}

}  // namespace

LogState& log_state() {
    static LogState state;
    return state;
}

void log_ap(int level, int errnum, const char* format, std::va_list arguments) {
    const int saved_errno = errno;
    const LogState& state = log_state();

    char message[message_size] = "";
    const int length = std::vsnprintf(message, sizeof message, format, arguments);
    append_errno_text(message, length, errnum);

    if (state.enabled != 0 && state.quiet == 0 && level <= state.verbose) {
        write_console(level, message);
    }
    if (state.enabled != 0 && state.log_file != nullptr && level <= state.level) {
        write_time_stamp(state.log_file.get());
        write_line(state.log_file.get(), level, message);
    }
    if (level < 0) {  // kept also where nothing is shown
        std::memcpy(error_buffer, message, sizeof error_buffer);
    }
    errno = saved_errno;
}

void log(int level, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    log_ap(level, 0, format, arguments);
    va_end(arguments);
}

int err(int status, int errnum, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    log_ap(-1, errnum, format, arguments);
    va_end(arguments);
    return status;
}

int log_set_file(const char* path) {
    LogState& state = log_state();
    const int saved_errno = errno;
    state.log_file.reset();  // first: after a failure no log is open
    int result = 0;
    if (path != nullptr) {
        state.log_file = open_log(path);
        result = state.log_file ? 0 : err(-1, errno, "unable to open log file: %s", path);
    }
    errno = saved_errno;
    return result;
}

int log_set_quiet(int quiet) {
    return exchange(log_state().quiet, quiet);
}
int log_set_verbose(int verbose) {
    return exchange(log_state().verbose, verbose);
}
int log_set_level(int level) {
    return exchange(log_state().level, level);
}

int log_get_verbose() {
    return log_state().verbose;
}
int log_get_level() {
    return log_state().level;
}

const char* get_error_buffer() {
    return error_buffer;
}
const char* get_last_error() {
    return error_buffer;
}
