#include "plan/record/recording_clock.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <utility>

#include "plan/text/utc.h"

namespace {

// No service is down for longer and then goes on with its recording.
constexpr std::int64_t longest_gap_ms = std::int64_t{30} * 86400 * 1000;

// The wall clock, where the last line was written.
std::int64_t last_wall_ms(const Recording& recording) {
    return recording.last_clock_ms.value_or(recording.header.start * 1000 + recording.last_ms());
}

// When the recorder of this boot began, by both clocks; nothing where it was another boot.
std::optional<std::int64_t> offset_in_boot(const Recording& recording, const std::string& boot_id) {
    const Continuation* last =
        recording.continuations.empty() ? nullptr : &recording.continuations.back();
    const std::optional<Hardware>& hardware =
        last != nullptr ? last->hardware : recording.header.hardware;
    const std::optional<std::int64_t> boot_ms =
        last != nullptr ? last->boot_ms : recording.header.boot_ms;
    if (boot_id.empty() || !hardware || hardware->boot_id != boot_id || !boot_ms) {
        return {};
    }
    return (last != nullptr ? last->at_ms : 0) - *boot_ms;
}

}  // namespace

std::int64_t kernel_boot_ms() {
    timespec now = {};
    clock_gettime(CLOCK_BOOTTIME, &now);
    return std::int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1000000;
}

std::int64_t system_wall_ms() {
    using std::chrono::milliseconds;
    return std::chrono::duration_cast<milliseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

RecordingClock::RecordingClock(TimeSources sources) : sources_(std::move(sources)) {
    offset_ms_ = -sources_.boot_ms();
}

RecordingClock::RecordingClock(TimeSources sources, const Recording& recording,
                               const std::string& boot_id)
    : sources_(std::move(sources)) {
    const std::int64_t up_ms = sources_.boot_ms();
    const std::int64_t last_ms = recording.last_ms();
    if (const std::optional<std::int64_t> offset = offset_in_boot(recording, boot_id)) {
        offset_ms_ = std::max(*offset, last_ms - up_ms);
        return;
    }
    const std::int64_t wall_ms = sources_.wall_ms();
    const std::int64_t gap_ms = wall_ms - last_wall_ms(recording);
    const std::int64_t limit_ms =
        std::max(longest_gap_ms, std::int64_t{recording.spans().time} * 1000);
    const bool is_believed = gap_ms >= 0 && gap_ms <= limit_ms;
    offset_ms_ = last_ms + (is_believed ? gap_ms : up_ms) - up_ms;
    if (!is_believed) {
        doubts_ = "the clock says " + utc_text(wall_ms / 1000) +
                  ", but the last line was written " + utc_text(last_wall_ms(recording) / 1000) +
                  ": the time in between is not counted";
    }
}
