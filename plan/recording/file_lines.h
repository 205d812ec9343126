// The lines of a file that anybody may have made; the file is never whole in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "kiln/plain_file.h"

class FileLines {
public:
    // Reads what is open until its end, and no more than so many bytes of it.
    FileLines(Kiln::PlainFile file, std::uint64_t most_bytes);

    // The next line with its newline, which the last one may lack; valid until the next call. Empty
    // at the end, and where there is trouble.
    std::string_view next();

    // Why it ended early: "it is larger than 256 MiB", "line 7 is longer than 1 MiB", or what the
    // system says. Empty where it did not.
    const std::string& trouble() const { return trouble_; }

private:
    bool read_piece();
    std::string_view take(std::size_t size);
    void count(std::uint64_t bytes);

    Kiln::Descriptor fd_;
    std::uint64_t most_bytes_;
    std::uint64_t bytes_ = 0;  // that were read
    std::uint64_t lines_ = 0;
    std::string unread_;     // a piece, from some line's beginning on
    std::size_t begin_ = 0;  // of the next line in it
    std::string trouble_;
};
