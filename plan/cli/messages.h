// What the commands share: their statuses, messages and results.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "kiln/result.h"
#include "plan/text/say.h"

enum ExitStatus : int {
    status_done = 0,
    status_flawed = 1,  // done, but something is wrong with the subject; it has been said
    status_usage = 2,
    status_io = 3,  // something cannot be read or written
};

// A result on its way to a file or to standard output.
struct Output {
    std::string path;                 // empty for standard output
    std::vector<std::string> inputs;  // the files that it was made from
    mode_t mode = 0600;               // of a new file
};

// Writes all of it, or leaves the file empty. A file that is one of the inputs, or a recording, is
// refused as it is.
Kiln::Done write_result(const Output& output, const std::string& text);

// Says the reason, if there is one. Returns status_done or status_io.
template <class Value>
ExitStatus say_trouble(const Kiln::Result<Value>& result) {
    if (!result) {
        say(result.reason());
    }
    return result ? status_done : status_io;
}

// Says what is wrong with the subject, a line each. Returns status_done or status_flawed.
ExitStatus say_flaws(const std::vector<std::string>& flaws);

// Writes the result, then says the flaws. Returns status_io where it cannot be written.
ExitStatus finish(const Output& output, const std::string& text,
                  const std::vector<std::string>& flaws);

// The same where what is wrong stands in the text.
ExitStatus finish(const Output& output, const std::string& text, bool is_flawed);
