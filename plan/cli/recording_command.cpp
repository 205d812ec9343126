#include "plan/cli/recording_command.h"

#include <utility>

#include "plan/recording/recording_files.h"

void add_scale_options(CLI::App& app, ScaleOptions& options) {
    app.add_option("--mem-scale", options.memory, "Factor for counts and memory, 1.2");
    app.add_option("--disk-scale", options.disk, "Factor for the disk, 1.5");
}

void add_recording_options(CLI::App& app, RecordingOptions& options) {
    add_scale_options(app, options.scales);
    app.add_option("-o,--out", options.out_path, "Write to this file");
}

ExitStatus read_recorded_host(const RecordingOptions& options, RecordedHost& host) {
    if (!read_scales(options.scales, host.scales)) {
        return status_usage;
    }
    for (const std::string& path : options.paths) {
        Kiln::Result<NamedRecording> read = read_recording(path);
        if (!read) {
            say(read.reason());
            return status_io;
        }
        host.recordings.push_back(std::move(*read));
    }
    Kiln::Result<CombinedScan> combined = combine(host.recordings);
    if (!combined) {
        say(combined.reason());
        return status_io;
    }
    host.scan = std::move(*combined);
    return status_done;
}

ExitStatus say_flaws(const RecordedHost& host, const ComputedConfig& computed) {
    const std::vector<std::string> flaws = find_flaws(host.recordings, host.scan, computed);
    for (const std::string& flaw : flaws) {
        say(flaw);
    }
    return flaws.empty() ? status_done : status_flawed;
}
