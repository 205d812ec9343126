// One pass of a recording, taken where it may hang.
#pragma once

#include <optional>
#include <string>

#include "inspect/host.h"
#include "plan/record/usage.h"
#include "plan/recording/recording.h"

struct TakenPass {
    RecordedPass pass;
    std::string messages;  // what was written to standard error meanwhile
};

// Takes every step of a pass in a child process, each for so many seconds at most, and reads what
// the host uses, until `wake_fd` can be read; then there is none. A pass of which a step fails or
// hangs has the counts of those before it; so has one with a forgiven step that there could be no
// process for. The number and the times are left to the caller.
std::optional<TakenPass> take_bounded_pass(const Host& host, const UsageSources& sources,
                                           int limit_seconds, int wake_fd);
