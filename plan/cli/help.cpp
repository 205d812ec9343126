#include "plan/cli/help.h"

#include <memory>

#include "plan/cli/command_names.h"

namespace {

// Widest option, and a blank behind it; what is longer has a line of its own.
constexpr std::size_t column_of_texts = 28;

class HelpText : public CLI::Formatter {
public:
    std::string make_option_opts(const CLI::Option* option) const override {
        const bool takes_value = option->get_type_size() != 0 && !option->get_positional();
        std::string text = takes_value ? " " + get_label(option->get_type_name()) : "";
        if (!option->get_default_str().empty()) {
            text += " [" + option->get_default_str() + "]";
        }
        const bool takes_many = option->get_expected_max() >= CLI::detail::expected_max_vector_size;
        return text + (takes_many ? " ..." : "");
    }
};

const CLI::App* command_called(const CLI::App& program, const std::string& name) {
    const std::vector<const CLI::App*> found = program.get_subcommands(
        [&](const CLI::App* command) { return command->get_name() == name; });
    return found.empty() ? nullptr : found.front();
}

// CLI11's own help() turns to the command that was called, and that is `help`.
std::string help_of(const CLI::App& app, const std::string& name) {
    return app.get_formatter()->make_help(&app, name, CLI::AppFormatMode::Normal);
}

std::string unknown_word(const CLI::App& program, const std::string& word) {
    std::vector<std::string> names;
    for (const CLI::App* command : program.get_subcommands({})) {
        names.push_back(command->get_name());
    }
    return unknown_command(word, names);
}

int run_help(const CLI::App& program, const std::string& name) {
    const CLI::App* command = command_called(program, name);
    if (command == nullptr && !name.empty()) {
        say(unknown_word(program, name));
        return status_usage;
    }
    const std::string text = command == nullptr
                                 ? program_help(program)
                                 : help_of(*command, program.get_name() + " " + name);
    return write_result({}, text) ? status_done : status_io;
}

}  // namespace

void shape_help(CLI::App& program) {
    const auto shape = std::make_shared<HelpText>();
    shape->column_width(column_of_texts);
    shape->label("TEXT", "FILE");
    shape->label("SUBCOMMAND", "COMMAND");
    program.formatter(shape);
    for (CLI::App* command : program.get_subcommands(nullptr)) {
        command->formatter(shape);
        command->group("Commands");
    }
}

Command add_help(CLI::App& program) {
    CLI::App* app = program.add_subcommand("help", "Print the commands, or the options of one");
    const auto name = std::make_shared<std::string>();
    app->add_option("command", *name, "One of the others");
    return {app, [&program, name] { return run_help(program, *name); }};
}

std::string program_help(const CLI::App& program) {
    return help_of(program, program.get_name());
}

std::optional<std::string> command_trouble(const CLI::App& program, const std::string& word) {
    const bool is_known = word.rfind('-', 0) == 0 || command_called(program, word) != nullptr;
    return is_known ? std::nullopt : std::optional(unknown_word(program, word));
}
