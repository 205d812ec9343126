// What a check of a host finds to be remarked on, and what to do about it.
#pragma once

#include <string>
#include <vector>

struct CheckFinding {
    std::string text;
    std::string remedy;
};

using CheckFindings = std::vector<CheckFinding>;
