// The entry of tarnhwplan: choose the command, run it.
#include <unistd.h>

#include <exception>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "kiln/files.h"
#include "kiln/process_setup.h"
#include "plan/cli/help.h"

namespace {

// Help or the version was asked for, or the command line is wrong.
int end_of_parsing(const CLI::App& program, const CLI::ParseError& error) {
    std::ostringstream answer;
    if (program.exit(error, answer, answer) != 0) {
        say(std::string(error.what()) + "; see: tarnhwplan help");
        return status_usage;
    }
    return write_result({}, answer.str()) ? status_done : status_io;
}

int run_program(int argc, char** argv) {
    CLI::App program("Prepares, records, computes and explains what tarnhwcalc finds on a server.",
                     "tarnhwplan");
    program.set_version_flag("-v,--version", "tarnhwplan " TARN_VERSION);
    program.require_subcommand(1);
    const std::vector<Command> commands = {
        add_check(program),   add_record(program),  add_compute(program),
        add_explain(program), add_metrics(program), add_report(program),
        add_limits(program),  add_verify(program),  add_help(program),
    };
    shape_help(program);
    if (argc < 2) {
        const std::string text = program_help(program);
        static_cast<void>(Kiln::write_all(STDERR_FILENO, text.data(), text.size()));
        return status_usage;
    }
    if (const std::optional<std::string> trouble = command_trouble(program, argv[1])) {
        say(*trouble);
        return status_usage;
    }
    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return end_of_parsing(program, error);
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
        return run_program(argc, argv);
    } catch (const std::exception& error) {
        say(error.what());
        return status_io;
    }
}
