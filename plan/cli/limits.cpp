// tarnhwplan limits: what a container of today needs, written for the engine that runs it.
#include <cmath>
#include <memory>

#include "plan/cli/recording_command.h"
#include "plan/limits/engines.h"

namespace {

struct Options : RecordingOptions {
    std::string engine;
    double cpu_scale = 1.2;
    int cpu_percentile = 95;
    bool cpu_limit = false;
};

int run(const Options& options) {
    if (!std::isfinite(options.cpu_scale)) {
        say("--cpu-scale must be a number");
        return status_usage;
    }
    const Kiln::Result<RecordedHost> host = read_recorded_host(options);
    if (!host) {
        return say_trouble(Kiln::Reason{host.reason()});
    }
    LimitOptions wanted;
    wanted.scales = options.scales;
    wanted.cpu_scale = options.cpu_scale;
    wanted.cpu_percentile = options.cpu_percentile;
    wanted.cpu_limit = options.cpu_limit;
    const LimitSheet sheet = work_out_limits(host->recordings, host->scan, wanted);
    const LimitsText limits = limits_text(*engine_called(options.engine), sheet);
    if (const ExitStatus status =
            say_trouble(write_result({options.out_path, options.paths}, limits.text))) {
        return status;
    }
    for (const std::string& complaint : limits.complaints) {
        say(complaint);
    }
    return limits.complaints.empty() ? status_done : status_flawed;
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
    const auto options = std::make_shared<Options>();
    app->add_option("--for", options->engine, "systemd, nspawn, lxc, podman, kubernetes or rsync")
        ->required()
        ->check(quiet(CLI::IsMember(engine_names())))
        ->type_name("ENGINE");
    add_recording_options(*app, *options);
    app->add_option("--cpu-scale", options->cpu_scale, "Factor for the processors")
        ->check(quiet(CLI::PositiveNumber))
        ->type_name("FACTOR")
        ->default_str("1.2");
    app->add_option("--cpu-percentile", options->cpu_percentile,
                    "Of the cores in use: the guaranteed share")
        ->check(quiet(CLI::Range(1, 100)))
        ->type_name("N")
        ->default_str("95");
    app->add_flag("--cpu-limit", options->cpu_limit, "Limit the processors to their peak");
    app->add_option("recording", options->paths, "Recordings of one host")->required();
    return {app, [options] { return run(*options); }};
}
