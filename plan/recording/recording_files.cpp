#include "plan/recording/recording_files.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <utility>

#include "kiln/files.h"
#include "kiln/plain_file.h"
#include "plan/recording/format.h"
#include "plan/text/printable.h"

namespace {

constexpr std::size_t piece_size = 65536;
// Far more than any line of ours; a file without newlines must not fill the memory.
constexpr std::size_t most_bytes_of_line = std::size_t{1} << 20;

Kiln::Reason unreadable(const std::string& why) {
    return {" cannot be read: " + why};
}

// The file is never whole in memory. The reason is what follows its path.
Kiln::Done parse_file(const Kiln::PlainFile& file, std::uint64_t most_bytes,
                      RecordingParser& parser) {
    std::string unread;  // from some line's beginning on
    std::ptrdiff_t lines = 0;
    std::uint64_t bytes = file.size > most_bytes ? file.size : 0;
    ssize_t got = 1;
    while (got > 0) {
        const std::size_t kept = unread.size();
        unread.resize(kept + piece_size);
        got = Kiln::read_some(file.fd.get(), &unread[kept], piece_size);
        if (got < 0) {
            return unreadable(std::strerror(errno));
        }
        unread.resize(kept + static_cast<std::size_t>(got));
        bytes += static_cast<std::size_t>(got);
        if (bytes > most_bytes) {
            return unreadable("it is larger than " + size_text(static_cast<double>(most_bytes)) +
                              "; --max-size allows more");
        }
        if (std::min(unread.find('\n'), unread.size()) > most_bytes_of_line) {
            return unreadable("line " + std::to_string(lines + 1) + " is longer than 1 MiB");
        }
        std::string_view rest = unread;
        if (const Kiln::Done taken = parser.take_lines(rest, got == 0); !taken) {
            return Kiln::Reason{": " + taken.reason()};
        }
        lines += std::count(unread.begin(), unread.end(), '\n');
        unread.erase(0, unread.size() - rest.size());
    }
    return {};
}

}  // namespace

Kiln::Result<NamedRecording> read_recording(const std::string& path, std::uint64_t most_bytes) {
    const Kiln::Result<Kiln::PlainFile> file = Kiln::open_plain_file(path);
    if (!file) {
        return Kiln::Reason{path + " cannot be read: " + file.reason()};
    }
    RecordingParser parser;
    // Before what was read is judged: a file that broke off is not a short one.
    if (const Kiln::Done read = parse_file(*file, most_bytes, parser); !read) {
        return Kiln::Reason{path + read.reason()};
    }
    Kiln::Result<Recording> parsed = parser.finish();
    if (!parsed) {
        return Kiln::Reason{path + ": " + parsed.reason()};
    }
    return NamedRecording{path, std::move(*parsed)};
}
