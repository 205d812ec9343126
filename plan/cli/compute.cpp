// tarnhwplan compute: the configuration that the calculator would have printed from these samples.
#include <unistd.h>

#include "calc/env_config.h"
#include "kiln/files.h"
#include "plan/cli/recording_command.h"
#include "plan/text/printable.h"

namespace {

int run_compute(const RecordingOptions& options, const RecordedHost& host) {
    const ComputedConfig computed = compute_known_lines(host.scan, options.scales);
    EnvConfig config;
    write_config(computed.lines, config);
    const Output output = {options.out_path, options.paths};
    if (const ExitStatus status = finish(output, config.text(), false)) {
        return status;
    }
    // Whoever reads the paths needs their bytes; a terminal must not act on them.
    const std::string notes =
        harmless_lines(host.scan.messages + notes_text(host.scan.profile.notes));
    if (Kiln::write_all(STDERR_FILENO, notes.data(), notes.size()) != 0) {
        return status_io;
    }
    return say_flaws(find_flaws(host.recordings, host.scan, computed));
}

}  // namespace

Command add_compute(CLI::App& program) {
    CLI::App* app =
        program.add_subcommand("compute", "Print the configuration that the samples give");
    const auto options = std::make_shared<RecordingOptions>();
    add_recording_options(*app, *options);
    return recording_command(app, options, run_compute);
}
