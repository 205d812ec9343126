// What the commands have in common that compute from recordings.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "calc/config_scales.h"
#include "plan/cli/commands.h"
#include "plan/recording/combined_scan.h"
#include "plan/recording/recording_files.h"

// How recordings are read and computed.
struct ReadingOptions {
    ConfigScales scales;
    std::uint64_t most_bytes = usual_most_bytes;  // of one recording
};

struct RecordingOptions : ReadingOptions {
    std::string out_path;
    std::vector<std::string> paths;
};

void add_reading_options(CLI::App& app, ReadingOptions& options);

// These, the file for the result, and the recordings, which it returns.
CLI::Option* add_recording_options(CLI::App& app, RecordingOptions& options);

// The recordings of one host, and what they come to.
struct RecordedHost {
    std::vector<NamedRecording> recordings;
    CombinedScan scan;
};

// Reads what the options name. The reason says what is wrong.
Kiln::Result<RecordedHost> read_recorded_host(const RecordingOptions& options);

// The command that reads what its options name, and is run with both.
template <class Options>
Command recording_command(CLI::App* app, std::shared_ptr<Options> options,
                          int (*run)(const Options&, const RecordedHost&)) {
    return {app, [options, run] {
                const Kiln::Result<RecordedHost> host = read_recorded_host(*options);
                return host ? run(*options, *host) : say_trouble(host);
            }};
}
