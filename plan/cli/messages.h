// What the commands share: their statuses, messages, results and factors.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

#include "calc/config_scales.h"
#include "plan/text/say.h"

enum ExitStatus : int {
    status_done = 0,
    status_flawed = 1,  // done, but something is wrong with the subject; it has been said
    status_usage = 2,
    status_io = 3,  // something cannot be read or written
};

// Writes to the file, which is made with the mode where there is none, or to standard output when
// the path is empty. Returns false after saying why.
bool write_result(const std::string& path, const std::string& text, mode_t mode = 0600);

// The two factors, as texts until they are read.
struct ScaleOptions {
    std::optional<std::string> memory;
    std::optional<std::string> disk;
};

// Stores those that were given. Returns false after saying what is wrong with one.
bool read_scales(const ScaleOptions& options, ConfigScales& scales);
