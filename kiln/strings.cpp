#include "kiln/strings.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace Kiln {

namespace {

constexpr std::string_view blanks = " \t\r\n";

bool is_blank(char c) {
    return blanks.find(c) != std::string_view::npos;
}

void drop_trailing_empty(std::vector<std::string>& fields) {
    while (!fields.empty() && fields.back().empty()) {
        fields.pop_back();
    }
}

}  // namespace

bool contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

void strip(std::string& s) {
    // The end first: it leaves an empty string where there is nothing but blanks (npos + 1 is 0).
    s.erase(s.find_last_not_of(blanks) + 1);
    s.erase(0, s.find_first_not_of(blanks));
}

void collapse(std::string& s) {
    s.erase(std::remove_if(s.begin(), s.end(), is_blank), s.end());
}

std::vector<std::string> split(const char* delims, const std::string& s, int max) {
    // Any character of the set ends a field, yet the whole set's length is skipped: that is the
    // documented rule, and the two agree for a single character.
    const std::size_t skip = std::strlen(delims);
    std::vector<std::string> fields;
    std::size_t start = 0;
    while (max <= 0 || fields.size() + 1 < static_cast<std::size_t>(max)) {
        const std::size_t end = s.find_first_of(delims, start);
        if (end == std::string::npos) {
            break;
        }
        fields.emplace_back(s, start, end - start);
        start = std::min(end + skip, s.size());
    }
    fields.emplace_back(s, start);
    if (max == 0) {
        drop_trailing_empty(fields);
    }
    return fields;
}

std::string_view take_word(std::string_view& line) {
    line.remove_prefix(std::min(line.find_first_not_of(blanks_in_line), line.size()));
    const std::string_view word = line.substr(0, line.find_first_of(blanks_in_line));
    line.remove_prefix(word.size());
    return word;
}

std::vector<std::string_view> words_of(std::string_view line) {
    std::vector<std::string_view> words;
    for (std::string_view word = take_word(line); !word.empty(); word = take_word(line)) {
        words.push_back(word);
    }
    return words;
}

}  // namespace Kiln
