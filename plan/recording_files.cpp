#include "plan/recording_files.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>
#include <variant>

#include "kiln/owners.h"
#include "plan/messages.h"

namespace {

// Returns 0 or the system error number. Unlike the calculator's sources a recording may come
// through a pipe.
int read_whole(const std::string& path, std::string& text) {
    const Kiln::Descriptor fd(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!fd) {
        return errno;
    }
    char bytes[65536];
    for (;;) {
        const ssize_t got = read(fd.get(), bytes, sizeof(bytes));
        if (got == 0) {
            return 0;
        }
        if (got > 0) {
            text.append(bytes, static_cast<std::size_t>(got));
        } else if (errno != EINTR) {
            return errno;
        }
    }
}

}  // namespace

Kiln::Result<NamedRecording> read_recording(const std::string& path) {
    std::string text;
    if (const int error = read_whole(path, text)) {
        return Kiln::Reason{path + " cannot be read: " + std::strerror(error)};
    }
    Kiln::Result<Recording> parsed = parse_recording(text);
    if (const auto* reason = std::get_if<Kiln::Reason>(&parsed)) {
        return Kiln::Reason{path + ": " + reason->text};
    }
    return NamedRecording{path, std::get<Recording>(std::move(parsed))};
}

std::optional<CombinedRecordings> read_and_combine(const std::vector<std::string>& paths) {
    CombinedRecordings read;
    for (const std::string& path : paths) {
        Kiln::Result<NamedRecording> result = read_recording(path);
        if (const auto* reason = std::get_if<Kiln::Reason>(&result)) {
            say(reason->text);
            return {};
        }
        read.recordings.push_back(std::get<NamedRecording>(std::move(result)));
    }
    Kiln::Result<CombinedScan> combined = combine(read.recordings);
    if (const auto* reason = std::get_if<Kiln::Reason>(&combined)) {
        say(reason->text);
        return {};
    }
    read.scan = std::get<CombinedScan>(std::move(combined));
    return read;
}
