// Whether a command could be run at all, by what came of it: where there was no process for it, its
// failure says nothing of what it does on this host. Pure.
#pragma once

#include <string>

// Of a shell's command and what the runner returned for it: false where the shell could not be
// started or was killed, and where it says that it could not start a part of the command.
bool had_processes(int status, const std::string& messages);
