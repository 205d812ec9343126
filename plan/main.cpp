// The entry of tarnhwplan: choose the command, run it.
#include <exception>
#include <vector>

#include "kiln/process_setup.h"
#include "plan/cli/commands.h"

namespace {

int run(int argc, char** argv) {
    CLI::App program("Prepares, records, computes and explains what tarnhwcalc finds on a server.",
                     "tarnhwplan");
    program.set_version_flag("-v,--version", "tarnhwplan " TARN_VERSION);
    program.require_subcommand(1);
    const std::vector<Command> commands = {
        add_check(program),   add_record(program), add_compute(program), add_explain(program),
        add_metrics(program), add_report(program), add_limits(program),  add_verify(program),
    };
    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return program.exit(error) == 0 ? status_done : status_usage;
    }
    for (const Command& command : commands) {
        if (command.app->parsed()) {
            return command.run();
        }
    }
    return status_usage;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        prepare_process();
        return run(argc, argv);
    } catch (const std::exception& error) {
        say(error.what());
        return status_io;
    }
}
