// Splitting, stripping and squeezing of texts.
#include "kiln/strings.h"

#include <algorithm>

#include "fuzz/support.h"

namespace {

using Fields = std::vector<std::string>;

std::string joined(const Fields& fields, const std::string& separator) {
    return Kiln::join(separator.c_str(), fields);
}

bool has_any(const std::string& text, const std::string& characters) {
    return text.find_first_of(characters.c_str()) != std::string::npos;
}

void check_one_delimiter(const std::string& delimiter, const std::string& text, int max) {
    const Fields every = Kiln::split(delimiter.c_str(), text, -1);
    fuzz::require(joined(every, delimiter) == text, "the fields joined give the text back");

    const Fields limited = Kiln::split(delimiter.c_str(), text, max);
    fuzz::require(limited.size() == std::min<std::size_t>(every.size(), static_cast<unsigned>(max)),
                  "a limit changes the number of fields only when there are more");
    fuzz::require(joined(limited, delimiter) == text, "a limited split loses nothing either");

    Fields cut = Kiln::split(delimiter.c_str(), text, 0);
    fuzz::require(cut.empty() || !cut.back().empty(), "trailing empty fields are dropped");
    cut.resize(every.size());
    fuzz::require(cut == every, "and nothing else is");
}

}  // namespace

// Input: the delimiters, a limit as one character, the text.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<std::string> parts = fuzz::sections(data, size, 3);
    const std::string delimiters = parts[0].c_str();
    const int max = parts[1].empty() ? 1 : 1 + static_cast<unsigned char>(parts[1][0]);
    std::string text = parts[2];
    if (delimiters.size() == 1) {
        check_one_delimiter(delimiters, text, max);
    }
    for (const std::string& field : Kiln::split(delimiters.c_str(), text, -1)) {
        fuzz::require(!has_any(field, delimiters), "no field holds a delimiter");
    }
    fuzz::require(Kiln::split(delimiters.c_str(), text, max).size() <= static_cast<unsigned>(max),
                  "never more fields than asked for");

    std::string stripped = text;
    Kiln::strip(stripped);
    fuzz::require(text.find(stripped) != std::string::npos, "stripping leaves a part of the text");
    Kiln::collapse(text);
    fuzz::require(!has_any(text, " \t\r\n"), "no blank is left");
    return 0;
}
