// A task that may hang, done by a child process: ended when it takes too long or is not wanted any
// more, with everything that it started.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

struct BoundedTask {
    enum class End { finished, too_long, stopped, died, not_begun };
    End end = End::not_begun;
    std::string text;  // what the task handed over
    // What was written to standard error meanwhile, 64 KiB at most; or why there could be no child.
    std::string messages;
    std::int64_t took_ms = 0;
};

// Why there is no text of a task that did not finish.
std::string why_not_finished(const BoundedTask& task, int limit_seconds);

constexpr int no_wake_fd = -1;

// A task's text may be handed over piece by piece: what was handed over before a task is ended is
// not lost, and each piece is a sign of life.
using TakePiece = std::function<void(std::string_view piece)>;

// Does the task in a child until it is silent for so many seconds, or until `wake_fd` can be read.
// The child, with the commands that it runs, does not outlive us either.
// A child that cannot be killed (it waits for a dead disk) is left behind, and reaped by a later
// task once it is gone.
BoundedTask run_bounded(const std::function<void(const TakePiece& take_piece)>& task,
                        int limit_seconds, int wake_fd);

// The same for a task that has its whole text at its end.
BoundedTask run_bounded(const std::function<std::string()>& task, int limit_seconds, int wake_fd);
