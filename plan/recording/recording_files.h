// Recordings from files.
#pragma once

#include <string>

#include "plan/recording/combined_scan.h"

// Reads the recording behind the path, or says why it cannot be read.
Kiln::Result<NamedRecording> read_recording(const std::string& path);
