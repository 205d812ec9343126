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

// Whether the text names the lines already, or there are none.
inline bool names_its_lines(const CheckFinding& finding) {
    return Kiln::contains(finding.text, Kiln::join(", ", finding.lines));
}

using CheckFindings = std::vector<CheckFinding>;
