// What is said of the lines that a finding makes wrong. Pure.
#pragma once

#include <string>

#include "plan/recording/finding.h"

// Whether its text names them already, or there are none.
bool names_its_lines(const CheckFinding& finding);
