#include "plan/check/output_shapes.h"

#include <algorithm>
#include <vector>

#include "calc/sample.h"
#include "calc/sample_parsers.h"
#include "kiln/strings.h"

namespace {

bool is_number(const std::string& text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

std::vector<std::string> words_of(const std::string& line) {
    std::vector<std::string> words;
    std::size_t begin = line.find_first_not_of(" \t");
    while (begin != std::string::npos) {
        const std::size_t end = line.find_first_of(" \t", begin);
        words.push_back(line.substr(begin, end - begin));
        begin = line.find_first_not_of(" \t", end);
    }
    return words;
}

std::string quoted(const std::string& line) {
    return "\"" + line + "\"";
}

std::string count_objection(const std::string& out) {
    std::string number = out;
    Kiln::collapse(number);
    return is_number(number) ? "" : "it prints " + quoted(out) + " where a number should be";
}

std::string pages_objection(const std::string& out) {
    const std::size_t label = out.find("pages allocated");
    const bool has_number =
        label != std::string::npos && out.find_first_of("0123456789", label) != std::string::npos;
    return has_number ? "" : "it does not say how many pages are allocated";
}

// Filesystem     1K-blocks    Used Available Use% Mounted on
std::string columns_objection(const std::string& out) {
    const std::vector<std::string> lines = Kiln::split("\n", out, 0);
    if (lines.empty()) {
        return "it prints nothing";
    }
    const std::vector<std::string> names = words_of(lines.front());
    if (names.size() < 6 || (names[2] != "Used" && names[2] != "IUsed")) {
        return "its third column is not the one in use: " + quoted(lines.front());
    }
    for (std::size_t i = 1; i < lines.size(); ++i) {
        const std::vector<std::string> words = words_of(lines[i]);
        if (words.size() < 6 || !is_number(words[2])) {
            return "the number in use is not the third word of " + quoted(lines[i]);
        }
    }
    return {};
}

// `ls` complains of every descriptor that goes away meanwhile.
bool complains_in_good_health(const SampleStep& step) {
    return step.count == &PhysParams::numfile;
}

std::string first_line(const std::string& text) {
    return text.substr(0, text.find('\n'));
}

}  // namespace

std::string shape_objection(const SampleStep& step, const std::string& out,
                            const std::string& err) {
    std::string objection = count_objection(out);
    if (step.parse == parse_shm_pages) {
        objection = pages_objection(out);
    } else if (step.parse == sum_used_column) {
        objection = columns_objection(out);
    }
    const bool counts_nothing = complains_in_good_health(step) && step.parse(out) == 0;
    if (objection.empty() && !err.empty() && (counts_nothing || !complains_in_good_health(step))) {
        objection = "it says " + quoted(first_line(err));
    }
    return objection;
}
