#include "calc/sample_parsers.h"

#include <string_view>

#include "kiln/numbers.h"
#include "kiln/strings.h"

namespace {

constexpr const char* DIGITS = "0123456789";
constexpr const char* BLANKS = " \t";

// The third column of one line; 0 when the line is too short for it.
std::int32_t parse_used_column(const std::string& line) {
    std::size_t pos = line.find_first_of(BLANKS);
    if (pos != std::string::npos) {
        pos = line.find_first_not_of(BLANKS, pos);
    }
    if (pos != std::string::npos) {
        pos = line.find_first_of(BLANKS, pos);
    }
    if (pos != std::string::npos) {
        pos = line.find_first_of(DIGITS, pos);
    }
    return pos == std::string::npos ? 0 : Kiln::leading_int(line.c_str() + pos);
}

}  // namespace

// 143
std::int32_t parse_count(std::string text) {
    Kiln::collapse(text);
    return Kiln::leading_int(text.c_str());
}

// ------ Shared Memory Status --------
// segments allocated 7
// pages allocated 1043
std::int32_t parse_shm_pages(const std::string& text) {
    constexpr std::string_view label = "pages allocated";
    std::size_t pos = text.find(label);
    if (pos != std::string::npos) {
        pos = text.find_first_of(DIGITS, pos + label.size());
    }
    return pos == std::string::npos ? 0 : Kiln::leading_int(text.c_str() + pos);
}

// Filesystem     1K-blocks    Used Available Use% Mounted on
// /dev/sda1        8189368 3920012   3833624  51% /
std::int32_t sum_used_column(const std::string& text) {
    const std::vector<std::string> lines = Kiln::split("\n", text, 0);
    std::int32_t sum = 0;
    for (std::size_t i = 1; i < lines.size(); ++i) {
        sum = Kiln::wrap_add(sum, parse_used_column(lines[i]));
    }
    return sum;
}
