// The command line: the option table, its messages, and the usage and version texts.
#pragma once

#include <string>

#include "calc/tarn_hwcalc.h"

// Reads the options into the calculator's settings and the output path (empty for standard output).
// Returns 0 to go on with the run, 1 when there is nothing more to do (help or version shown, or an
// unknown option), -1 on a usage error. Writes its messages to standard error.
int parse_args(int argc, char** argv, TarnHWCalc* calc, std::string& out_path);

// To standard error.
void print_usage(const char* progname);

// To standard output.
void print_version();
