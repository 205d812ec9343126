// What the commands have in common that compute from recordings.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "plan/cli/commands.h"
#include "plan/recording/combined_scan.h"
#include "plan/recording/recording_files.h"

struct RecordingOptions {
    ScaleOptions scales;
    std::uint64_t most_bytes = usual_most_bytes;  // of one recording
    std::string out_path;
    std::vector<std::string> paths;
};

void add_scale_options(CLI::App& app, ScaleOptions& options);
void add_size_option(CLI::App& app, std::uint64_t& most_bytes);

// These and the file for the result, but not the recordings.
void add_recording_options(CLI::App& app, RecordingOptions& options);

// The recordings of one host, what they come to, and the factors to compute with.
struct RecordedHost {
    ConfigScales scales;
    std::vector<NamedRecording> recordings;
    CombinedScan scan;
};

// Reads what the options name. Returns status_done, or another after saying what is wrong.
ExitStatus read_recorded_host(const RecordingOptions& options, RecordedHost& host);

// Says what is wrong with what was computed. Returns the status that this gives.
ExitStatus say_flaws(const RecordedHost& host, const ComputedConfig& computed);
