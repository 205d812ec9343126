// What a check of a host finds to be remarked on, and what to do about it.
#pragma once

#include <string>
#include <vector>

struct CheckFinding {
    std::string text;
    std::string remedy;
    std::vector<std::string> lines = {};  // of the configuration, whose numbers it makes wrong
};

using CheckFindings = std::vector<CheckFinding>;
