// tarnhwplan limits: what a container of today needs, written for the engine that runs it.
#include <cmath>

#include "plan/cli/recording_command.h"
#include "plan/limits/engines.h"

namespace {

struct EngineOptions : RecordingOptions {
    std::string engine;
    LimitOptions limits;
};

int run_limits(const EngineOptions& options, const RecordedHost& host) {
    LimitOptions wanted = options.limits;
    wanted.scales = options.scales;
    const LimitSheet sheet = work_out_limits(host.recordings, host.scan, wanted);
    const LimitsText limits = limits_text(*engine_called(options.engine), sheet);
    return finish({options.out_path, options.paths}, limits.text, limits.complaints);
}

// Without what it would put behind the option in the help.
CLI::Validator quiet(const CLI::Validator& validator) {
    return validator.description("");
}

std::vector<std::string> engine_names() {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < engine_count; ++i) {
        names.emplace_back(name_of(static_cast<Engine>(i)));
    }
    return names;
}

}  // namespace

Command add_limits(CLI::App& program) {
    CLI::App* app =
        program.add_subcommand("limits", "Write limits for the engine that runs a container");
    const auto options = std::make_shared<EngineOptions>();
    app->add_option("--for", options->engine, "systemd, nspawn, lxc, podman, kubernetes or rsync")
        ->required()
        ->check(quiet(CLI::IsMember(engine_names())))
        ->type_name("ENGINE");
    add_recording_options(*app, *options);
    app->add_option("--cpu-scale", options->limits.cpu_scale, "Factor for the processors")
        ->check(quiet(CLI::PositiveNumber))
        ->type_name("FACTOR")
        ->default_str("1.2");
    app->add_option("--cpu-percentile", options->limits.cpu_percentile,
                    "Of the cores in use: the guaranteed share")
        ->check(quiet(CLI::Range(1, 100)))
        ->type_name("N")
        ->default_str("95");
    app->add_flag("--cpu-limit", options->limits.cpu_limit, "Limit the processors to their peak");
    const Command command = recording_command(app, options, run_limits);
    return {app, [options, command]() -> int {
                if (std::isnan(options->limits.cpu_scale)) {  // a number, as the parser sees it
                    say("--cpu-scale must be a number");
                    return status_usage;
                }
                return command.run();
            }};
}
