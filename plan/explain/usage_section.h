// What a host used, and how large it is, for a person. Pure; the explanation's part "Usage".
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "calc/container_config.h"
#include "plan/explain/usage_summary.h"
#include "plan/recording/combined_scan.h"

// The machine as the newest of those who recorded saw it; nothing where no recording says.
std::optional<Hardware> newest_hardware(const std::vector<NamedRecording>& recordings);

// Lines of at most 80 columns: the machine, then median, 95th percentile and peak of what was used.
// A sentence where no recording carries it.
std::string usage_section(const UsageSummaries& usage, const std::optional<Hardware>& hardware);

// Why the line asks for more than the machine has; nothing when it does not, or nobody knows.
// `page_size` is in bytes.
std::optional<std::string> larger_than_machine(const ConfigLine& line,
                                               const std::optional<Hardware>& hardware,
                                               std::int32_t page_size);
