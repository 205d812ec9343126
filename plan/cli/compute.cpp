// tarnhwplan compute: the configuration that the calculator would have printed from these samples.
#include <unistd.h>

#include <memory>

#include "calc/env_config.h"
#include "kiln/files.h"
#include "plan/cli/recording_command.h"

namespace {

void write_notes(const CombinedScan& scan) {
    const std::string text = scan.messages + notes_text(scan.profile.notes);
    static_cast<void>(Kiln::write_all(STDERR_FILENO, text.data(), text.size()));
}

int run(const RecordingOptions& options) {
    RecordedHost host;
    if (const ExitStatus status = read_recorded_host(options, host)) {
        return status;
    }
    const ComputedConfig computed = compute_known_lines(host.scan, host.scales);
    EnvConfig config;
    write_config(computed.lines, config);
    if (!write_result(options.out_path, config.text())) {
        return status_io;
    }
    write_notes(host.scan);
    return say_flaws(host, computed);
}

}  // namespace

Command add_compute(CLI::App& program) {
    CLI::App* app =
        program.add_subcommand("compute", "Print the configuration that the samples give");
    const auto options = std::make_shared<RecordingOptions>();
    add_recording_options(*app, *options);
    app->add_option("recording", options->paths, "Recordings of one host")->required();
    return {app, [options] { return run(*options); }};
}
