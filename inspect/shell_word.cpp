#include "inspect/shell_word.h"

#include <cstddef>

namespace {

// What ends a word or a command, quotes, expands or is a pattern. A closing bracket or brace does
// nothing without its opening one; "^" and "!" mean nothing to a shell that reads a command text
// (the "^" that piped went with the first shells), nor do "=" and "%" inside an argument.
constexpr std::string_view acted_on = " \t\n|&;<>()$`\\\"'*?[{";

constexpr std::string_view acted_on_in_front = "#~";

bool is_escape(std::string_view text) {
    constexpr std::string_view octal = "01234567";
    return text.size() >= 4 && text[0] == '\\' && text[1] <= '3' &&
           text.substr(1, 3).find_first_not_of(octal) == std::string_view::npos;
}

}  // namespace

bool is_plain_shell_word(std::string_view text) {
    if (!text.empty() && acted_on_in_front.find(text.front()) != std::string_view::npos) {
        return false;
    }
    std::size_t at = text.find_first_of(acted_on);
    while (at != std::string_view::npos && is_escape(text.substr(at))) {
        at = text.find_first_of(acted_on, at + 1);
    }
    return at == std::string_view::npos;
}
