#include "plan/text/wrapped.h"

#include <algorithm>

#include "plan/text/printable.h"

std::string wrapped(const std::string& text, const std::string& first_indent,
                    const std::string& indent, std::size_t columns) {
    std::string lines;
    std::string line = first_indent;
    bool has_word = false;
    std::size_t end = 0;
    for (std::size_t begin = text.find_first_not_of(' '); begin != std::string::npos;
         begin = text.find_first_not_of(' ', end)) {
        // Several blanks stay where the line goes on, and go where it is broken.
        const std::string gap(has_word ? begin - end : 0, ' ');
        end = std::min(text.find(' ', begin), text.size());
        const std::string word = text.substr(begin, end - begin);
        if (has_word && columns_of(line) + gap.size() + columns_of(word) > columns) {
            lines += line + "\n";
            line = indent + word;
        } else {
            line += gap + word;
        }
        has_word = true;
    }
    return lines + line + "\n";
}
