// How a line that is made from other lines came to its number, in words. Pure; a part of the
// explanation.
#pragma once

#include <string>
#include <vector>

#include "calc/container_config.h"
#include "plan/recording/combined_scan.h"

// The term that decided and the ones that it beat; empty for a line that is made from none.
// `lines` are those that could be computed.
std::string derivation_of(const ConfigLine& line, const std::vector<ConfigLine>& lines,
                          const CombinedScan& scan, ConfigScales scales);

// The lines that it is made from directly.
std::vector<std::string> parts_of(const std::string& line);

// "1.2", the float that is meant.
std::string factor_text(double factor);
