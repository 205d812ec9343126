// Recordings from files.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "plan/combined_scan.h"

// Reads the recording behind the path, or says why it cannot be read.
Kiln::Result<NamedRecording> read_recording(const std::string& path);

struct CombinedRecordings {
    std::vector<NamedRecording> recordings;
    CombinedScan scan;
};

// All of them, which must be of one host. Nothing after saying what is wrong.
std::optional<CombinedRecordings> read_and_combine(const std::vector<std::string>& paths);
