// The time of a recording: the wall clock's, but never back.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>

// Goes with the wall clock, ahead when that jumps ahead; when it jumps back, the time goes on from
// where it was.
class ForwardClock {
public:
    // Milliseconds since the epoch.
    using Wall = std::int64_t (*)();
    using Steady = std::chrono::steady_clock::time_point (*)();

    explicit ForwardClock(std::int64_t not_before_ms = 0, Wall wall = wall_ms,
                          Steady steady = std::chrono::steady_clock::now)
        : wall_(wall), steady_(steady), last_ms_(not_before_ms), last_steady_(steady()) {}

    std::int64_t now_ms() {
        const auto steady = steady_();
        const std::int64_t passed =
            std::chrono::duration_cast<std::chrono::milliseconds>(steady - last_steady_).count();
        const std::int64_t wall = wall_() + ahead_ms_;
        // The two clocks never agree to the millisecond; only a jump counts.
        if (wall + jump_ms_ < last_ms_ + passed) {
            ahead_ms_ += last_ms_ + passed - wall;
        }
        last_ms_ = std::max(last_ms_, wall_() + ahead_ms_);
        last_steady_ = steady;
        return last_ms_;
    }

    static std::int64_t wall_ms() {
        return std::chrono::duration_cast<std::chrono::milliseconds>(
                   std::chrono::system_clock::now().time_since_epoch())
            .count();
    }

private:
    static constexpr std::int64_t jump_ms_ = 500;

    Wall wall_;
    Steady steady_;
    std::int64_t ahead_ms_ = 0;  // of the wall clock
    std::int64_t last_ms_;
    std::chrono::steady_clock::time_point last_steady_;
};
