// Recordings from files.
#pragma once

#include <string>
#include <vector>

#include "plan/combined_scan.h"

// Reads the recording behind the path, or says why it cannot be read.
Kiln::Result<NamedRecording> read_recording(const std::string& path);

// All of them; none after saying what is wrong with one.
std::vector<NamedRecording> read_recordings(const std::vector<std::string>& paths);
