// The one way to run a shell command. Not re-entrant, see CallerExec.
#pragma once

#include <string>

// Runs `command` with "sh -c", standard input closed, in the environment of this process, and waits
// for it and for everyone else who holds its outputs open. `out` and `err` receive exactly what it
// wrote. Returns its exit status (0 to 255), or -1 when a signal ended it. When the machinery
// fails, returns -1 with `out` empty and the reason in `err`. Throws nothing of its own.
int runscript(std::string command, std::string& out, std::string& err);
