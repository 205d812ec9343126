// An explanation as JSON: what `explain --json` prints, and what the report's page is fed.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "plan/explain/explanation.h"

// Numbers are numbers, what is not there is null, texts of a host are as in a recording.
nlohmann::ordered_json explanation_json(const Explanation& explanation);
