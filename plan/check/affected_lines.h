// Which lines of the configuration live on what a step finds.
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "calc/one_shot_steps.h"
#include "calc/sample.h"

// All in the order of the configuration.
std::vector<std::string> lines_on(const TakenCounts& counts);
std::vector<std::string> lines_on(std::initializer_list<CountField> counts);
std::vector<std::string> lines_on(OneShotStep step);
