// Splitting, stripping and squeezing of texts.
#include "kiln/strings.h"

#include "fuzz/support.h"

// Input: the delimiters, a limit as one character, the text.
void try_input(fuzz::Input input) {
    const std::vector<std::string> parts = input.sections(3);
    const std::string delimiters = parts[0].c_str();
    const int max = parts[1].empty() ? 1 : 1 + static_cast<unsigned char>(parts[1][0]);
    std::string text = parts[2];
    const std::vector<std::string> every = Kiln::split(delimiters.c_str(), text, -1);
    for (const std::string& field : every) {
        require(field.find_first_of(delimiters) == field.npos, "no field holds a delimiter");
    }
    const std::vector<std::string> limited = Kiln::split(delimiters.c_str(), text, max);
    require(limited.size() <= static_cast<unsigned>(max), "never more fields than asked for");
    if (delimiters.size() == 1) {
        require(Kiln::join(delimiters.c_str(), every) == text, "joined they give the text back");
        require(limited.size() == std::min<std::size_t>(every.size(), static_cast<unsigned>(max)),
                "a limit changes the number of fields only when there are more");
        require(Kiln::join(delimiters.c_str(), limited) == text, "a limited split loses nothing");
        std::vector<std::string> cut = Kiln::split(delimiters.c_str(), text, 0);
        require(cut.empty() || !cut.back().empty(), "trailing empty fields are dropped");
        cut.resize(every.size());
        require(cut == every, "and nothing else is");
    }

    std::string stripped = text;
    Kiln::strip(stripped);
    require(text.find(stripped) != std::string::npos, "stripping leaves a part of the text");
    Kiln::collapse(text);
    require(text.find_first_of(" \t\r\n") == text.npos, "no blank is left");
}
