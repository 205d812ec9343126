#include "plan/record/command_run.h"

// sh: 1: Cannot fork
// sh: fork: retry: Resource temporarily unavailable
// sh: can't fork: Cannot allocate memory
bool had_processes(int status, const std::string& messages) {
    return status >= 0 && (status == 0 || messages.find("fork") == std::string::npos);
}
