#include "calc/sample_parsers.h"

#include <algorithm>
#include <string_view>

#include "kiln/numbers.h"
#include "kiln/strings.h"

namespace {

using Kiln::blanks_in_line;
using Kiln::digits;

// The third column of the line that lies in `text` from `begin` to `end`; 0 when the line is too
// short for it. The conversion starts at a digit, so it cannot run over the end of the line.
std::int32_t parse_used_column(const std::string& text, std::size_t begin, std::size_t end) {
    const std::string_view line(text.data() + begin, end - begin);
    std::size_t pos = line.find_first_of(blanks_in_line);  // a search from npos finds nothing
    pos = line.find_first_not_of(blanks_in_line, pos);
    pos = line.find_first_of(blanks_in_line, pos);
    pos = line.find_first_of(digits, pos);
    return pos == std::string_view::npos ? 0 : Kiln::leading_int(text.c_str() + begin + pos);
}

}  // namespace

// 143
std::int32_t parse_count(const std::string& text) {
    std::string number = text;
    Kiln::collapse(number);
    return Kiln::leading_int(number.c_str());
}

// ------ Shared Memory Status --------
// segments allocated 7
// pages allocated 1043
std::int32_t parse_shm_pages(const std::string& text) {
    constexpr std::string_view label = "pages allocated";
    std::size_t pos = text.find(label);
    if (pos != std::string::npos) {
        pos = text.find_first_of(digits, pos + label.size());
    }
    return pos == std::string::npos ? 0 : Kiln::leading_int(text.c_str() + pos);
}

// Filesystem     1K-blocks    Used Available Use% Mounted on
// /dev/sda1        8189368 3920012   3833624  51% /
//
// Walked in place: a df that prints rubbish by the megabyte must not cost many times as much
// memory.
std::int32_t sum_used_column(const std::string& text) {
    std::int32_t sum = 0;
    std::size_t line_end = text.find('\n');
    while (line_end != std::string::npos) {
        const std::size_t begin = line_end + 1;
        line_end = text.find('\n', begin);
        sum = Kiln::wrap_add(sum, parse_used_column(text, begin, std::min(line_end, text.size())));
    }
    return sum;
}
