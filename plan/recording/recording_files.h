// Recordings from files that anybody may have made.
#pragma once

#include <cstdint>
#include <string>

#include "plan/recording/combined_scan.h"

// A week of passes every minute is 5 MiB.
constexpr std::uint64_t usual_most_bytes = std::uint64_t{256} << 20;

// Reads the recording behind the path, or says why it cannot be read: a file of more bytes than
// that, a line of more than a MiB. Waits for nobody but who writes to a pipe without a name.
Kiln::Result<NamedRecording> read_recording(const std::string& path, std::uint64_t most_bytes);
