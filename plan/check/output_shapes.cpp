#include "plan/check/output_shapes.h"

#include <algorithm>
#include <vector>

#include "calc/sample.h"
#include "calc/sample_parsers.h"
#include "kiln/strings.h"
#include "plan/recording/never_none.h"

namespace {

bool is_number(std::string_view text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

std::string quoted(const std::string& line) {
    return "\"" + line + "\"";
}

Kiln::Done check_count(const std::string& out) {
    std::string number = out;
    Kiln::collapse(number);
    return is_number(number)
               ? Kiln::Done()
               : Kiln::Reason{"it prints " + quoted(out) + " where a number should be"};
}

Kiln::Done check_pages(const std::string& out) {
    const std::size_t label = out.find("pages allocated");
    const bool has_number =
        label != std::string::npos && out.find_first_of("0123456789", label) != std::string::npos;
    return has_number ? Kiln::Done() : Kiln::Reason{"it does not say how many pages are allocated"};
}

// Filesystem     1K-blocks    Used Available Use% Mounted on
Kiln::Done check_columns(const std::string& out) {
    const std::vector<std::string> lines = Kiln::split("\n", out, 0);
    if (lines.empty()) {
        return Kiln::Reason{"it prints nothing"};
    }
    const std::vector<std::string_view> names = Kiln::words_of(lines.front());
    if (names.size() < 6 || (names[2] != "Used" && names[2] != "IUsed")) {
        return Kiln::Reason{"its third column is not the one in use: " + quoted(lines.front())};
    }
    for (std::size_t i = 1; i < lines.size(); ++i) {
        const std::vector<std::string_view> words = Kiln::words_of(lines[i]);
        if (words.size() < 6 || !is_number(words[2])) {
            return Kiln::Reason{"the number in use is not the third word of " + quoted(lines[i])};
        }
    }
    return {};
}

// `ls` complains of every descriptor that goes away meanwhile.
bool complains_in_good_health(const SampleStep& step) {
    return step.count == &PhysParams::numfile;
}

Kiln::Done check_output(const SampleStep& step, const std::string& out) {
    if (step.parse == parse_shm_pages) {
        return check_pages(out);
    }
    return step.parse == sum_used_column ? check_columns(out) : check_count(out);
}

}  // namespace

Kiln::Done check_shape(const SampleStep& step, const std::string& out, const std::string& err) {
    const Kiln::Done good = check_output(step, out);
    const bool counts_nothing = complains_in_good_health(step) && step.parse(out) == 0;
    if (good && !err.empty() && (counts_nothing || !complains_in_good_health(step))) {
        return Kiln::Reason{"it says " + quoted(err.substr(0, err.find('\n')))};
    }
    if (good && is_never_none(step.count) && step.parse(out) == 0) {
        return Kiln::Reason{"it counts none, which cannot be"};
    }
    return good;
}
