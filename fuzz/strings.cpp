// Splitting, stripping and squeezing of texts.
#include "kiln/strings.h"

#include "fuzz/support.h"

namespace {

bool has_any(const std::string& text, const std::string& characters) {
    return text.find_first_of(characters) != std::string::npos;
}

void check_one_delimiter(const char* delimiter, const std::string& text, int max) {
    const std::vector<std::string> every = Kiln::split(delimiter, text, -1);
    require(Kiln::join(delimiter, every) == text, "the fields joined give the text back");

    const std::vector<std::string> limited = Kiln::split(delimiter, text, max);
    require(limited.size() == std::min<std::size_t>(every.size(), static_cast<unsigned>(max)),
            "a limit changes the number of fields only when there are more");
    require(Kiln::join(delimiter, limited) == text, "a limited split loses nothing either");

    std::vector<std::string> cut = Kiln::split(delimiter, text, 0);
    require(cut.empty() || !cut.back().empty(), "trailing empty fields are dropped");
    cut.resize(every.size());
    require(cut == every, "and nothing else is");
}

}  // namespace

// Input: the delimiters, a limit as one character, the text.
void try_input(fuzz::Input input) {
    const std::vector<std::string> parts = input.sections(3);
    const std::string delimiters = parts[0].c_str();
    const int max = parts[1].empty() ? 1 : 1 + static_cast<unsigned char>(parts[1][0]);
    std::string text = parts[2];
    if (delimiters.size() == 1) {
        check_one_delimiter(delimiters.c_str(), text, max);
    }
    for (const std::string& field : Kiln::split(delimiters.c_str(), text, -1)) {
        require(!has_any(field, delimiters), "no field holds a delimiter");
    }
    require(Kiln::split(delimiters.c_str(), text, max).size() <= static_cast<unsigned>(max),
            "never more fields than asked for");

    std::string stripped = text;
    Kiln::strip(stripped);
    require(text.find(stripped) != std::string::npos, "stripping leaves a part of the text");
    Kiln::collapse(text);
    require(!has_any(text, " \t\r\n"), "no blank is left");
}
