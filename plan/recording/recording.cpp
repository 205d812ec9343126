#include "plan/recording/recording.h"

#include <algorithm>

ScanSpans Recording::spans() const {
    return continuations.empty() ? header.spans : continuations.back().spans;
}

// Lines of any kind may be the last: a recorder ends where a signal or a power cut finds it.
std::int64_t Recording::last_ms() const {
    std::int64_t last = summary ? summary->at_ms : 0;
    if (!checks.empty()) {
        last = std::max(last, checks.back().at_ms);
    }
    if (!continuations.empty()) {
        last = std::max(last, continuations.back().at_ms);
    }
    if (!passes.empty()) {
        last = std::max(last, passes.back().at_ms + passes.back().took_ms);
    }
    return last;
}
