// tarnhwplan verify: whether a container that runs met a limit of its control group.
#include <memory>

#include "plan/cli/commands.h"
#include "plan/verify/verdict.h"

namespace {

struct VerifyOptions {
    std::string group;
    bool json = false;
};

int run_verify(const VerifyOptions& options) {
    const Kiln::Result<GroupFiles> read = read_control_group(options.group);
    if (!read) {
        return say_trouble(read);
    }
    const GroupVerdict verdict = judge(parse_control_group(*read));
    const std::string text = options.json ? verdict_json(verdict) : verdict_text(verdict);
    return finish({}, text, !verdict.all_fit);
}

}  // namespace

Command add_verify(CLI::App& program) {
    CLI::App* app =
        program.add_subcommand("verify", "Say whether a control group met one of its limits");
    const auto options = std::make_shared<VerifyOptions>();
    app->add_option("cgroup", options->group, "Its path, below /sys/fs/cgroup or whole")
        ->required();
    app->add_flag("--json", options->json, "Write JSON");
    return {app, [options] { return run_verify(*options); }};
}
