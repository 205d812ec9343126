#include "plan/recording/file_lines.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "kiln/files.h"
#include "plan/text/printable.h"

namespace {

constexpr std::size_t piece_size = 65536;
// Far more than any line of ours; a file without newlines must not fill the memory.
constexpr std::size_t most_bytes_of_line = std::size_t{1} << 20;

}  // namespace

FileLines::FileLines(Kiln::PlainFile file, std::uint64_t most_bytes)
    : fd_(std::move(file.fd)), most_bytes_(most_bytes), trouble_(std::move(file.trouble)) {
    if (file.size > most_bytes_) {
        count(file.size);
    }
}

void FileLines::count(std::uint64_t bytes) {
    bytes_ += bytes;
    if (bytes_ > most_bytes_) {
        trouble_ = "it is larger than " + size_text(static_cast<double>(most_bytes_)) +
                   "; --max-size allows more";
    }
}

// Returns false at the end, and where there is trouble.
bool FileLines::read_piece() {
    unread_.erase(0, std::exchange(begin_, 0));
    const std::size_t kept = unread_.size();
    unread_.resize(kept + piece_size);
    const ssize_t got = Kiln::read_some(fd_.get(), &unread_[kept], piece_size);
    if (got < 0) {
        trouble_ = std::strerror(errno);
    }
    const std::size_t more = got > 0 ? static_cast<std::size_t>(got) : 0;
    unread_.resize(kept + more);
    count(more);
    return more > 0 && trouble_.empty();
}

std::string_view FileLines::take(std::size_t size) {
    ++lines_;
    return std::string_view(unread_).substr(std::exchange(begin_, begin_ + size), size);
}

std::string_view FileLines::next() {
    if (!trouble_.empty()) {
        return {};
    }
    std::size_t end = unread_.find('\n', begin_);
    while (end == std::string::npos) {
        // What has been searched is not searched again: a long line comes in many pieces.
        const std::size_t searched = unread_.size() - begin_;
        if (!read_piece()) {
            return trouble_.empty() ? take(unread_.size()) : std::string_view();
        }
        end = unread_.find('\n', searched);
        if (std::min(end, unread_.size()) > most_bytes_of_line) {
            trouble_ = "line " + std::to_string(lines_ + 1) + " is longer than 1 MiB";
            return {};
        }
    }
    return take(end + 1 - begin_);
}
