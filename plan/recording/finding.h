// What a check of a host finds to be remarked on, and what to do about it.
#pragma once

#include <string>
#include <vector>

#include "kiln/strings.h"

struct CheckFinding {
    std::string text;
    std::string remedy;
    std::vector<std::string> lines = {};  // of the configuration, whose numbers it makes wrong
};

// What a check says of a user who is not root, whose recording says so itself.
inline constexpr const char* not_root_text =
    "you are not root: descriptors, rules and quotas of others are not seen, and their lines will "
    "be floors";

// Whether the text names the lines already, or there are none.
inline bool names_its_lines(const CheckFinding& finding) {
    return Kiln::contains(finding.text, Kiln::join(", ", finding.lines));
}

using CheckFindings = std::vector<CheckFinding>;
