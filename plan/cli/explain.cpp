// tarnhwplan explain: where each line of the configuration comes from, for a person or as JSON.
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>

#include "kiln/strings.h"
#include "plan/cli/recording_command.h"
#include "plan/explain/explanation.h"
#include "plan/explain/explanation_json.h"
#include "plan/text/printable.h"
#include "plan/text/utc.h"

namespace {

struct Options : RecordingOptions {
    bool json = false;
};

constexpr std::size_t name_width = 16;
constexpr std::size_t value_width = 30;

std::string padded(const std::string& text, std::size_t width) {
    const std::size_t columns = columns_of(text);
    return text + std::string(columns < width ? width - columns : 1, ' ');
}

// "1.2"
std::string factor_text(double factor) {
    char text[32];
    std::snprintf(text, sizeof(text), "%.6g", factor);
    return text;
}

// "126 processes seen at most, 2026-03-12T14:05:00Z, pass 2"
std::string seen_text(const LineExplanation& line, bool many_recordings) {
    std::string text = "; " + line.seen + " seen";
    if (line.peak) {
        text += " at most, " + utc_text(line.peak->time_ms / 1000) + ", pass " +
                std::to_string(line.peak->pass);
        if (many_recordings) {
            text += " of recording " + std::to_string(line.peak->recording + 1);
        }
    }
    return text;
}

std::string origin_text(const LineExplanation& line) {
    std::string text = name_of(line.basis);
    if (line.basis == Basis::floor) {
        text += " of " + std::to_string(*line.floor);
    }
    if (line.basis == Basis::derived) {
        text += " from " + Kiln::join(", ", line.made_from);
    } else if (line.factor) {
        text += ", times " + factor_text(*line.factor);
    }
    if (line.margin) {
        text += ", margin " + factor_text(*line.margin);
    }
    return text;
}

std::string line_text(const LineExplanation& line, bool many_recordings) {
    const std::string indent(name_width, ' ');
    std::string text = padded(line.name, name_width);
    if (line.basis != Basis::missing) {
        text += padded(printable(line.value), value_width) + line.meaning;
    }
    while (text.back() == ' ') {
        text.pop_back();
    }
    text += "\n" + indent + origin_text(line);
    if (!line.seen.empty()) {
        text += seen_text(line, many_recordings);
    }
    text += "\n";
    for (const std::string& remark : line.remarks) {
        text += indent + "! " + printable(remark) + "\n";
    }
    return text;
}

std::string explanation_text(const Explanation& explanation, std::size_t recordings) {
    std::string text = "host: " + printable(explanation.host) + "\n" +
                       coverage_in_words(explanation.coverage) + "\n";
    for (const std::string& remark : explanation.remarks) {
        text += "! " + printable(remark) + "\n";
    }
    text += "\n";
    for (const LineExplanation& line : explanation.lines) {
        text += line_text(line, recordings > 1);
    }
    return text;
}

int run(const Options& options) {
    RecordedHost host;
    if (const ExitStatus status = read_recorded_host(options, host)) {
        return status;
    }
    const Explanation explanation = explain(host.recordings, host.scan, host.scales);
    const std::string text = options.json ? explanation_json(explanation).dump(2) + "\n"
                                          : explanation_text(explanation, host.recordings.size());
    if (!write_result(options.out_path, text)) {
        return status_io;
    }
    return explanation.remarks.empty() ? status_done : status_flawed;
}

}  // namespace

Command add_explain(CLI::App& program) {
    CLI::App* app =
        program.add_subcommand("explain", "Say where each line of the configuration comes from");
    const auto options = std::make_shared<Options>();
    add_recording_options(*app, *options);
    app->add_flag("--json", options->json, "Write JSON");
    app->add_option("recording", options->paths, "Recordings of one host")->required();
    return {app, [options] { return run(*options); }};
}
