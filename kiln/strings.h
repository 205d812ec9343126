// Trimming, squeezing, splitting and joining of byte strings. Blank means one of " \t\r\n"; the
// locale plays no part.
#pragma once

#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace Kiln {

inline constexpr const char* digits = "0123456789";
inline constexpr const char* blanks_in_line = " \t";  // what separates the words of a line

bool contains(std::string_view text, std::string_view part);

// Removes leading and trailing blanks in place.
void strip(std::string& s);

// Removes every blank in place; the pieces are joined with nothing between them.
void collapse(std::string& s);

// The fields of `s` between delimiters. A delimiter is any one character of `delims`, but the next
// field starts strlen(delims) characters further on, at the end of `s` at the latest.
//   max > 0:  at most `max` fields, the last one holding the uncut rest;
//   max == 0: cut everywhere, trailing empty fields dropped (so "" has no field);
//   max < 0:  cut everywhere, every field kept.
// Empty fields in the middle are always kept.
std::vector<std::string> split(const char* delims, const std::string& s, int max);

// Takes the first word off a line, and the blanks (blanks_in_line) before it; empty without one.
std::string_view take_word(std::string_view& line);

// All words of a line; into its text.
std::vector<std::string_view> words_of(std::string_view line);

// The strings of a range with `sep` between them.
template <class It>
std::string join(const char* sep, It first, It last) {
    std::string joined;
    for (It it = first; it != last; ++it) {
        if (it != first) {
            joined += sep;
        }
        joined += *it;
    }
    return joined;
}

template <class Range>
std::string join(const char* sep, const Range& strings) {
    return join(sep, std::begin(strings), std::end(strings));
}

}  // namespace Kiln
