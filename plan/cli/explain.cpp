// tarnhwplan explain: where each line of the configuration comes from, for a person or as JSON.
#include <nlohmann/json.hpp>

#include "plan/cli/recording_command.h"
#include "plan/explain/explanation.h"
#include "plan/explain/explanation_json.h"
#include "plan/explain/explanation_text.h"
#include "plan/text/printable.h"

namespace {

struct ExplainOptions : RecordingOptions {
    bool json = false;
};

int run_explain(const ExplainOptions& options, const RecordedHost& host) {
    const Explanation explanation = explain(host.recordings, host.scan, options.scales);
    const std::string text = options.json
                                 ? printable_json(explanation_json(explanation).dump(2)) + "\n"
                                 : explanation_text(explanation, host.recordings);
    return finish({options.out_path, options.paths}, text,
                  explanation.verdict.state != State::done || !explanation.remarks.empty());
}

}  // namespace

Command add_explain(CLI::App& program) {
    CLI::App* app =
        program.add_subcommand("explain", "Say where each line of the configuration comes from");
    const auto options = std::make_shared<ExplainOptions>();
    add_recording_options(*app, *options);
    app->add_flag("--json", options->json, "Write JSON");
    return recording_command(app, options, run_explain);
}
