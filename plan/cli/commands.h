// The commands of tarnhwplan, one file each: their options, what they do and the status they end
// with.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>

#include "plan/cli/messages.h"

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
Command add_limits(CLI::App& program);
Command add_verify(CLI::App& program);
