// What is printed to whoever does not know the commands, or the options of one.
#pragma once

#include <optional>
#include <string>

#include "plan/cli/commands.h"

// When all commands are there: their help and the program's fit a terminal and show what an option
// takes and what it is without: "--mem-scale FACTOR [1.2]".
void shape_help(CLI::App& program);

// The command `help`, which prints that.
Command add_help(CLI::App& program);

// That of the program.
std::string program_help(const CLI::App& program);

// What is wrong with the word that should be the first command; nothing where it is one, or an
// option.
std::optional<std::string> command_trouble(const CLI::App& program, const std::string& word);
