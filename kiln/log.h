// The process-wide log: a console side, an optional log file, and the text of the last error. Used
// by the driver and the inspection steps. Never changes errno.
//
// Levels: negative ones are errors (prefix "Error: ", standard error), 0 is a plain message,
// positive ones are details (standard output, after a time stamp in seconds). Texts are cut at 4095
// characters.
#pragma once

#include <cstdarg>

#include "kiln/owners.h"

struct LogState {
    Kiln::File log_file;  // set by log_set_file
    int enabled = 1;      // 0 silences console and file; errors still reach the error buffer
    int quiet = 0;        // non-zero silences the console
    int verbose = 3;      // the highest level that reaches the console
    int level = 3;        // the highest level that reaches the log file
};

// The one instance of the process.
LogState& log_state();

// Logs one line at `level`. Part of the interface; nothing in this project calls it.
void log(int level, const char* format, ...) __attribute__((format(printf, 2, 3)));

// Logs one error line, with ": " and the system's text for `errnum` when that is not 0, and returns
// `status`. Unlike the C library's function of the same name it never ends the process.
int err(int status, int errnum, const char* format, ...) __attribute__((format(printf, 3, 4)));

// The body of the two above.
void log_ap(int level, int errnum, const char* format, std::va_list arguments)
    __attribute__((format(printf, 3, 0)));

// Closes the log file, then opens `path` for appending unless it is null, with mode 0644 when it is
// new. Returns 0, or -1 after reporting through err(); no log file is open then. A FIFO that nobody
// reads cannot be opened, and one that is full loses lines: the log never waits.
// Part of the interface; nothing in this project calls it.
int log_set_file(const char* path);

// Each returns the previous value. Part of the interface; nothing in this project calls it.
int log_set_quiet(int quiet);
int log_set_verbose(int verbose);
int log_set_level(int level);

// Part of the interface; nothing in this project calls it.
int log_get_verbose();
int log_get_level();

// The text of the last error, without prefix and newline; empty before the first one. Both return
// the same static buffer, which the next error overwrites.
// Part of the interface; nothing in this project calls it.
const char* get_error_buffer();
const char* get_last_error();
