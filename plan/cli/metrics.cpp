// tarnhwplan metrics: the last pass and the resulting limits, for a node exporter's text files.
#include <cstdio>

#include "plan/cli/recording_command.h"
#include "plan/explain/coverage.h"
#include "plan/explain/usage_section.h"
#include "plan/explain/usage_summary.h"

namespace {

constexpr mode_t everybodys_mode = 0644;  // who collects it is seldom root

std::string heading(const std::string& name, const char* help) {
    return "# HELP " + name + " " + help + "\n# TYPE " + name + " gauge\n";
}

std::string labelled(const std::string& name, const char* label, const std::string& value,
                     const std::string& number) {
    return name + "{" + label + "=\"" + value + "\"} " + number + "\n";
}

std::string single(const std::string& name, const char* help, const std::string& number) {
    return heading(name, help) + name + " " + number + "\n";
}

// Seconds with three digits behind the point; before 1970 they are negative.
std::string seconds_text(std::int64_t milliseconds) {
    char text[48];
    std::snprintf(text, sizeof(text), "%.3f", static_cast<double>(milliseconds) / 1000);
    return text;
}

std::string counts_text(const RecordedPass& pass) {
    const std::string name = "tarnhwplan_last_seen";
    std::string text = heading(name, "What the last pass counted.");
    for (std::size_t place = 0; place < sampled_count_number; ++place) {
        if (pass.taken.test(place)) {
            text += labelled(name, "count", sampled_counts[place].name,
                             std::to_string(pass.counts[place]));
        }
    }
    return text;
}

std::string pass_text(const RecordingHeader& header, const RecordedPass& pass) {
    return counts_text(pass) +
           single("tarnhwplan_last_pass_timestamp_seconds", "When the last pass began.",
                  seconds_text(header.start * 1000 + pass.at_ms)) +
           single("tarnhwplan_last_pass_duration_seconds", "How long the last pass took.",
                  seconds_text(pass.took_ms)) +
           single("tarnhwplan_last_pass_success", "Whether every step of the last pass succeeded.",
                  pass.failure ? "0" : "1");
}

std::string limits_text(const std::vector<ConfigLine>& lines) {
    const std::string barrier = "tarnhwplan_barrier";
    const std::string limit = "tarnhwplan_limit";
    std::string barriers = heading(barrier, "The barrier of a line of the configuration.");
    std::string limits = heading(limit, "The limit of a line of the configuration, or its value.");
    for (const ConfigLine& line : lines) {
        if (line.kind == LineFacts::Kind::pair) {
            barriers += labelled(barrier, "line", line.name, std::to_string(line.barrier));
        }
        if (line.kind != LineFacts::Kind::text) {
            limits += labelled(limit, "line", line.name, std::to_string(line.limit));
        }
    }
    return barriers + limits;
}

std::string coverage_text(const Coverage& coverage) {
    return single("tarnhwplan_planned_passes", "Passes that were planned.",
                  std::to_string(coverage.planned)) +
           single("tarnhwplan_passes", "Passes that were taken and did not fail.",
                  std::to_string(coverage.taken)) +
           single("tarnhwplan_failed_passes", "Passes that failed.",
                  std::to_string(coverage.failed)) +
           single("tarnhwplan_longest_gap_seconds", "The longest time between two passes.",
                  seconds_text(coverage.longest_gap_ms)) +
           single("tarnhwplan_coverage_grade", "From 1, scant, to 5, complete.",
                  std::to_string(coverage.grade));
}

// tarnhwplan_usage{quantity="memory",unit="bytes",statistic="p95"} 5368709120
std::string gauge(UsageQuantity quantity, const char* statistic, double value) {
    char number[64];
    std::snprintf(number, sizeof(number), "%.10g", base_value(quantity, value));
    return std::string("tarnhwplan_usage{quantity=\"") + name_of(quantity) + "\",unit=\"" +
           base_unit_of(quantity) + "\",statistic=\"" + statistic + "\"} " + number + "\n";
}

// Nothing where nothing was measured.
std::string gauges_text(const UsageSummaries& usage) {
    std::string gauges;
    for (std::size_t i = 0; i < usage.size(); ++i) {
        const auto quantity = static_cast<UsageQuantity>(i);
        if (usage[i].peak) {
            gauges += gauge(quantity, "median", usage[i].median) +
                      gauge(quantity, "p95", usage[i].percentile) +
                      gauge(quantity, "peak", usage[i].peak->value);
        }
    }
    return gauges.empty()
               ? ""
               : heading("tarnhwplan_usage", "What the host used over the time recorded.") + gauges;
}

std::string machine_text(const Hardware& hardware) {
    const auto size = [](const char* name, const char* help,
                         const std::optional<std::int64_t>& known, std::int64_t unit) {
        return known ? single(name, help, std::to_string(*known * unit)) : "";
    };
    return size("tarnhwplan_host_cpus", "Processors of the host.", hardware.cpus, 1) +
           size("tarnhwplan_host_memory_bytes", "Memory of the host.", hardware.memory_kib, 1024) +
           size("tarnhwplan_host_swap_bytes", "Swap space of the host.", hardware.swap_kib, 1024);
}

int run_metrics(const RecordingOptions& options, const RecordedHost& host) {
    const Recording& recording = host.recordings.front().recording;
    const ComputedConfig computed = compute_known_lines(host.scan, options.scales);
    const std::string text =
        pass_text(recording.header, recording.passes.back()) + limits_text(computed.lines) +
        coverage_text(measure_coverage(host.recordings)) +
        gauges_text(summarize_usage(usage_series(host.recordings))) +
        machine_text(newest_hardware(host.recordings).value_or(Hardware())) + "# EOF\n";
    return finish({options.out_path, options.paths, everybodys_mode}, text,
                  find_flaws(host.recordings, host.scan, computed));
}

}  // namespace

Command add_metrics(CLI::App& program) {
    CLI::App* app =
        program.add_subcommand("metrics", "Print the last pass and the limits as OpenMetrics");
    const auto options = std::make_shared<RecordingOptions>();
    add_recording_options(*app, *options)->description("The recording")->expected(1);
    return recording_command(app, options, run_metrics);
}
