#include "plan/recording/recording_files.h"

#include <fcntl.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "kiln/files.h"
#include "plan/recording/format.h"

namespace {

// Returns 0 or the system error number. Unlike the calculator's sources a recording may come
// through a pipe, which is waited for.
int read_whole(const std::string& path, std::string& text) {
    const Kiln::Descriptor fd(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    return fd ? Kiln::append_rest(fd.get(), text) : errno;
}

}  // namespace

Kiln::Result<NamedRecording> read_recording(const std::string& path) {
    std::string text;
    if (const int error = read_whole(path, text)) {
        return Kiln::Reason{path + " cannot be read: " + std::strerror(error)};
    }
    Kiln::Result<Recording> parsed = parse_recording(text);
    if (!parsed) {
        return Kiln::Reason{path + ": " + parsed.reason()};
    }
    return NamedRecording{path, std::move(*parsed)};
}
