// The ways to run a shell command: runscript is the calculator's, run_command ends early where it
// must. Neither is re-entrant, see CallerExec.
#pragma once

#include <chrono>
#include <optional>
#include <string>

// Runs `command` with "sh -c", standard input closed, in the environment of this process, and waits
// for it and for everyone else who holds its outputs open. `out` and `err` receive exactly what it
// wrote. Returns its exit status (0 to 255), or -1 when a signal ended it. When the machinery
// fails, returns -1 with `out` empty and the reason in `err`. Throws nothing of its own.
int runscript(std::string command, std::string& out, std::string& err);

namespace Kiln {

struct RunLimits {
    // The command is ended as soon as this descriptor can be read, be it before the start: a pipe
    // or an eventfd that a signal handler writes to. It is not read here and stays the caller's.
    // -1 for none.
    int stop_fd = -1;
    // How long the command may take, by the clock that nobody sets.
    std::optional<std::chrono::milliseconds> time = std::nullopt;
    // How long others, such as a service that the command started, may hold its outputs open after
    // its end. It is left to them whatever `time` says.
    std::chrono::milliseconds linger = std::chrono::seconds(1);
};

struct CommandEnd {
    enum How { exited, stopped, timed_out, failed };
    How how;
    int status;        // what runscript returns when the command has `exited`, else -1
    bool left_behind;  // killed, but still not gone: it waits in the kernel, and is left there
};

// As runscript, but within limits. The command gets a process group of its own, so the terminal's
// keys do not reach it; that group is killed when the command is `stopped` or has `timed_out`.
// `out` and `err` have what was written until then; when the machinery `failed`, nothing and the
// reason. A killed command that is not gone within a second is not waited for.
CommandEnd run_command(std::string command, std::string& out, std::string& err,
                       const RunLimits& limits);

}  // namespace Kiln
