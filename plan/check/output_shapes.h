// Whether commands print what the calculator's parsers read. Pure.
#pragma once

#include <string>

#include "calc/sample.h"
#include "kiln/result.h"

// Whether the output of a step of sample_steps that has a command is of the shape that is read; the
// reason says what it lacks. `err` is what the command wrote to standard error.
Kiln::Done check_shape(const SampleStep& step, const std::string& out, const std::string& err);
