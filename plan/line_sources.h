// Which counts a step of a pass fills, and which lines of the configuration live on which count and
// on which of the steps taken once.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "plan/recording.h"

// `step` is one of sample_steps.
TakenCounts counts_of_step(std::size_t step);

// The step that gives a line its text or number; nothing for a line made from counts.
std::optional<OneShotStep> step_behind(const std::string& line);

std::vector<std::string> lines_on_step(OneShotStep step);

// In the order of the configuration. `count` is named as in sample_fields.
std::vector<std::string> lines_on_count(const std::string& count);

// What every container gets of a count at least.
std::optional<std::int32_t> floor_of_count(const std::string& count);
