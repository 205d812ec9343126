// The commands of tarnhwplan, one file each: their options, what they do and the status they end
// with.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <optional>
#include <string>

#include "calc/container_config.h"

enum ExitStatus : int {
    status_done = 0,
    status_flawed = 1,  // done, but something is wrong with the subject; it has been said
    status_usage = 2,
    status_io = 3,  // something cannot be read or written
};

// A command whose options the parser fills; `run` is called after that and returns an ExitStatus.
struct Command {
    CLI::App* app;
    std::function<int()> run;
};

Command add_check(CLI::App& program);
Command add_record(CLI::App& program);
Command add_compute(CLI::App& program);
Command add_report(CLI::App& program);
Command add_explain(CLI::App& program);
Command add_metrics(CLI::App& program);

// One line on standard error, behind the program's name.
void say(const std::string& text);

// Writes to the file (made with mode 0600), or to standard output when the path is empty. Returns
// false after saying why.
bool write_result(const std::string& path, const std::string& text);

// The two factors, as texts until they are read.
struct ScaleOptions {
    std::optional<std::string> memory;
    std::optional<std::string> disk;
};

void add_scale_options(CLI::App& app, ScaleOptions& options);

// Stores those that were given. Returns false after saying what is wrong with one.
bool read_scales(const ScaleOptions& options, ConfigScales& scales);
