// What an engine has for each line of the calculator's configuration, and what it lacks. Pure.
#pragma once

#include <vector>

#include "plan/limits/engines.h"

// The lines without an equivalent, in the order of the configuration.
std::vector<LinesOfReason> lacking_lines(Engine engine);
