// An explanation for a person. Pure.
#pragma once

#include <string>
#include <vector>

#include "plan/explain/explanation.h"

// Lines for a terminal, where it acts on nothing of them: the verdict, the usage, then each line of
// the configuration. `recordings` are those that the explanation is of.
std::string explanation_text(const Explanation& explanation,
                             const std::vector<NamedRecording>& recordings);
