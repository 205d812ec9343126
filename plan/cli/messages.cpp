#include "plan/cli/messages.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "kiln/files.h"
#include "kiln/owners.h"
#include "kiln/plain_file.h"
#include "plan/recording/format.h"
#include "plan/text/printable.h"

namespace {

// Programs need the bytes as they are; a terminal must act on none of them.
Kiln::Done write_to(int fd, const std::string& name, const std::string& result) {
    const std::string text = isatty(fd) == 1 ? harmless_lines(result) : result;
    if (Kiln::write_all(fd, text.data(), text.size()) != 0) {
        return Kiln::Reason{name + " cannot be written: " + std::strerror(errno)};
    }
    return {};
}

// Under whatever name and through whatever links.
Kiln::Done check_no_input(int fd, const Output& output, const std::string& name) {
    struct stat written = {};
    if (fstat(fd, &written) != 0 || !S_ISREG(written.st_mode)) {
        return {};
    }
    for (const std::string& input : output.inputs) {
        struct stat read = {};
        if (stat(input.c_str(), &read) == 0 && read.st_dev == written.st_dev &&
            read.st_ino == written.st_ino) {
            return Kiln::Reason{name + " is not written: the result is made from it (" + input +
                                ")"};
        }
    }
    return {};
}

bool is_recording(const std::string& path) {
    constexpr std::size_t enough = 4096;
    const Kiln::Result<Kiln::PlainText> read = Kiln::read_plain_file(path, enough);
    return read && begins_like_recording(read->text);
}

// Empties what was opened for the result. Nothing of a device or a pipe can be.
Kiln::Done empty(int fd, const std::string& name) {
    struct stat info = {};
    if (fstat(fd, &info) == 0 && S_ISREG(info.st_mode) && ftruncate(fd, 0) != 0) {
        return Kiln::Reason{name + " cannot be emptied: " + std::strerror(errno)};
    }
    return {};
}

}  // namespace

Kiln::Done write_result(const Output& output, const std::string& text) {
    const bool is_file = !output.path.empty();
    const std::string name = is_file ? output.path : "standard output";
    // Opened without emptying it: what must not be written over is still whole when that is seen.
    const Kiln::Descriptor file(
        is_file ? open(name.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOCTTY, output.mode) : -1);
    if (is_file && !file) {
        return Kiln::Reason{name + " cannot be opened: " + std::strerror(errno)};
    }
    const int fd = is_file ? file.get() : STDOUT_FILENO;
    Kiln::Done done = check_no_input(fd, output, name);
    if (done && is_file) {
        done = is_recording(name) ? Kiln::Reason{name + " is not written: it is a recording"}
                                  : empty(fd, name);
    }
    if (!done) {
        return done;
    }
    done = write_to(fd, name, text);
    if (!done && is_file) {
        static_cast<void>(empty(fd, name));  // half of a result looks like a whole one
    }
    return done;
}

ExitStatus say_flaws(const std::vector<std::string>& flaws) {
    for (const std::string& flaw : flaws) {
        say(flaw);
    }
    return flaws.empty() ? status_done : status_flawed;
}

ExitStatus finish(const Output& output, const std::string& text,
                  const std::vector<std::string>& flaws) {
    const ExitStatus status = say_trouble(write_result(output, text));
    return status == status_done ? say_flaws(flaws) : status;
}

ExitStatus finish(const Output& output, const std::string& text, bool is_flawed) {
    const ExitStatus status = say_trouble(write_result(output, text));
    return status == status_done && is_flawed ? status_flawed : status;
}
