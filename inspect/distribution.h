// The distribution step: asks a detection script which distribution the host runs.
#pragma once

#include <string>
#include <vector>

#include "inspect/host.h"
#include "inspect/records.h"

struct DistributionFinding {
    std::string name;  // empty when none was detected; then there is one warning
    std::vector<TarnACalculateHWNodeWarning> warnings;
};

// Tries the scripts in their order, then the host's default one.
DistributionFinding detect_distribution(const Host& host, const std::vector<std::string>& scripts);

// Asks what is open at the descriptor as the host's default script, whatever stands in its place
// now; the script sees no difference. With -1 there is none.
DistributionFinding detect_distribution(const Host& host, int script_fd);
