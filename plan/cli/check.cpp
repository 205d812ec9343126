// tarnhwplan check: asks every source that a run asks, once, and says what would go wrong.
#include <memory>
#include <nlohmann/json.hpp>

#include "inspect/host.h"
#include "kiln/strings.h"
#include "plan/check/host_check.h"
#include "plan/cli/commands.h"
#include "plan/recording/json_text.h"
#include "plan/text/printable.h"
#include "plan/text/wrapped.h"

namespace {

using nlohmann::ordered_json;

struct CheckOptions {
    bool json = false;
    std::string out_path;
};

constexpr std::size_t what_width = 16;
constexpr std::size_t state_width = 10;
constexpr std::size_t time_width = 10;

const char* state_of(const CheckedStep& step) {
    if (step.succeeded) {
        return "found";
    }
    return step.forgiven ? "forgiven" : "FAILED";
}

const std::string indent(what_width, ' ');

// The reason may have several lines.
std::string indented(const std::string& text) {
    std::string shown;
    for (const std::string& line : Kiln::split("\n", text, 0)) {
        shown += wrapped(printable(line), indent, indent);
    }
    return shown;
}

std::string step_text(const CheckedStep& step) {
    const std::string head = padded(step.what, what_width) + padded(state_of(step), state_width) +
                             padded(std::to_string(step.took_ms) + " ms", time_width);
    return wrapped(printable(step.command), head, indent) + indented(step.result) +
           indented("for " + (step.lines.empty() ? "the notes" : Kiln::join(" ", step.lines)));
}

std::string finding_text(const CheckFinding& finding) {
    const std::string lines =
        names_its_lines(finding)
            ? ""
            : wrapped("makes wrong: " + Kiln::join(" ", finding.lines), "  ", "    ");
    return wrapped(printable(finding.text), "! ", "  ") + lines +
           wrapped("what to do: " + printable(finding.remedy), "  ", "    ");
}

std::string check_text(const HostCheck& check) {
    std::string text;
    for (const CheckedStep& step : check.steps) {
        text += step_text(step);
    }
    text += "\n";
    for (const CheckFinding& finding : check.findings) {
        text += finding_text(finding);
    }
    text += check.run_succeeds() ? "A run will succeed" : "A run will fail";
    text +=
        check.findings.empty() ? "; nothing else was found.\n" : "; see what was found above.\n";
    return text;
}

ordered_json step_json(const CheckedStep& step) {
    return {{"what", step.what},
            {"command", text_to_json(step.command)},
            {"succeeded", step.succeeded},
            {"forgiven", step.forgiven},
            {"result", text_to_json(step.result)},
            {"took_ms", step.took_ms},
            {"lines", step.lines}};
}

ordered_json finding_json(const CheckFinding& finding) {
    return {{"text", text_to_json(finding.text)},
            {"remedy", text_to_json(finding.remedy)},
            {"lines", finding.lines}};
}

std::string check_json(const HostCheck& check) {
    const ordered_json object = {{"run_succeeds", check.run_succeeds()},
                                 {"steps", list_to_json(check.steps, step_json)},
                                 {"findings", list_to_json(check.findings, finding_json)}};
    return printable_json(object.dump(2)) + "\n";
}

int run_check(const CheckOptions& options) {
    const HostCheck check = check_host(Host());
    const std::string text = options.json ? check_json(check) : check_text(check);
    return finish({options.out_path, {}}, text, !check.run_succeeds() || !check.findings.empty());
}

}  // namespace

Command add_check(CLI::App& program) {
    CLI::App* app =
        program.add_subcommand("check", "Ask every source once and say what would go wrong");
    const auto options = std::make_shared<CheckOptions>();
    app->add_flag("--json", options->json, "Write JSON");
    app->add_option("-o,--out", options->out_path, "Write to this file");
    return {app, [options] { return run_check(*options); }};
}
