// tarnhwplan compute: the configuration that the calculator would have printed from these samples.
#include <unistd.h>

#include <memory>
#include <optional>

#include "calc/env_config.h"
#include "kiln/files.h"
#include "plan/combined_scan.h"
#include "plan/commands.h"
#include "plan/recording_files.h"

namespace {

struct Options {
    ScaleOptions scales;
    std::string out_path;
    std::vector<std::string> paths;
};

void write_notes(const CombinedScan& scan) {
    const std::string text = scan.messages + notes_text(scan.profile.notes);
    static_cast<void>(Kiln::write_all(STDERR_FILENO, text.data(), text.size()));
}

int run(const Options& options) {
    ConfigScales scales;
    if (!read_scales(options.scales, scales)) {
        return status_usage;
    }
    const std::optional<CombinedRecordings> read = read_and_combine(options.paths);
    if (!read) {
        return status_io;
    }
    const ComputedConfig computed = compute_known_lines(read->scan, scales);
    EnvConfig config;
    write_config(computed.lines, config);
    if (!write_result(options.out_path, config.text())) {
        return status_io;
    }
    write_notes(read->scan);
    const std::vector<std::string> flaws = find_flaws(read->recordings, read->scan, computed);
    for (const std::string& flaw : flaws) {
        say(flaw);
    }
    return flaws.empty() ? status_done : status_flawed;
}

}  // namespace

Command add_compute(CLI::App& program) {
    CLI::App* app = program.add_subcommand(
        "compute", "Print the configuration and the notes that these samples give");
    const auto options = std::make_shared<Options>();
    add_scale_options(*app, options->scales);
    app->add_option("-o,--out", options->out_path, "Write the configuration to this file");
    app->add_option("recording", options->paths, "Recordings of one host")->required();
    return {app, [options] { return run(*options); }};
}
