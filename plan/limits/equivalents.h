// What an engine has for each line of the calculator's configuration, and what it lacks. Pure.
#pragma once

#include <string>
#include <vector>

#include "plan/limits/engines.h"

// Lines without an equivalent, and the one reason that they share.
struct LackingLines {
    std::vector<std::string> lines;  // in the order of the configuration
    std::string reason;
};

// By their reasons, in the order of the first line of each.
std::vector<LackingLines> lacking_lines(Engine engine);
