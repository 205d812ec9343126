// Whether commands print what the calculator's parsers read. Pure.
#pragma once

#include <string>

#include "calc/sample.h"

// What the output of a step of sample_steps lacks, or an empty text. `err` is what the command
// wrote to standard error.
std::string shape_objection(const SampleStep& step, const std::string& out, const std::string& err);
