// Words that the shell hands on as they are.
#include "inspect/shell_word.h"

#include <wordexp.h>

#include "fuzz/support.h"

namespace {

// The one word that the C library, which expands as a shell does, makes of the text.
std::string expanded(const std::string& text) {
    wordexp_t words{};
    require(wordexp(text.c_str(), &words, WRDE_NOCMD | WRDE_UNDEF) == 0,
            "nothing in the word is an operator or a mistake");
    require(words.we_wordc == 1, "it stays one word");
    const std::string word = words.we_wordv[0];
    wordfree(&words);
    return word;
}

// A mount table's escape, three octal digits behind a backslash.
bool is_escape(const std::string& text) {
    return text.size() == 4 && text.find_first_not_of("01234567", 1) == std::string::npos &&
           std::strtoul(&text[1], nullptr, 8) <= 255;
}

}  // namespace

void try_input(fuzz::Input input) {
    std::string text = input.text().c_str();
    if (!is_plain_shell_word(text)) {
        // All that a shell may want quoted.
        require(text.find_first_of("|&;<>()$`\\\"' \t\n*?[#~{") != std::string::npos,
                "an ordinary name is refused");
        return;
    }
    for (std::size_t at = text.find('\\'); at < text.size(); at = text.find('\\', at + 1)) {
        require(is_escape(text.substr(at, 4)), "the only backslashes are the table's");
    }
    // Unlike a shell, the library minds a closing brace that nothing opened, and takes "/a=~" for
    // an assignment.
    std::replace(text.begin(), text.end(), '}', 'x');
    std::replace(text.begin() + (text.empty() ? 0 : 1), text.end(), '~', 'x');
    std::string plain;
    std::remove_copy(text.begin(), text.end(), std::back_inserter(plain), '\\');
    require(text.empty() || expanded(text) == plain, "all but the backslashes stays");
}
