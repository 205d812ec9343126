// tarnhwplan compute: the configuration that the calculator would have printed from these samples.
#include <unistd.h>

#include <memory>

#include "calc/env_config.h"
#include "kiln/files.h"
#include "plan/cli/recording_command.h"
#include "plan/text/printable.h"

namespace {

// Whoever reads the paths needs their bytes; a terminal must not act on them.
bool write_notes(const CombinedScan& scan) {
    const std::string text = harmless_lines(scan.messages + notes_text(scan.profile.notes));
    return Kiln::write_all(STDERR_FILENO, text.data(), text.size()) == 0;
}

int run(const RecordingOptions& options) {
    const Kiln::Result<RecordedHost> host = read_recorded_host(options);
    if (!host) {
        return say_trouble(Kiln::Reason{host.reason()});
    }
    const ComputedConfig computed = compute_known_lines(host->scan, options.scales);
    EnvConfig config;
    write_config(computed.lines, config);
    const Output output = {options.out_path, options.paths};
    if (const ExitStatus status = say_trouble(write_result(output, config.text()))) {
        return status;
    }
    if (!write_notes(host->scan)) {
        return status_io;
    }
    return say_flaws(*host, computed);
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
