#include "plan/record/stop_signals.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <system_error>

namespace {

constexpr int longest_wait_ms = 60000;

volatile std::sig_atomic_t signals_seen = 0;
volatile std::sig_atomic_t signal_writer = -1;
std::atomic<std::int64_t> counted_signal_ms;

constexpr std::int64_t same_signal_ms = 1000;

std::int64_t steady_ms() {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1000000;
}

void note_signal(int /*signal_number*/) {
    const int saved_errno = errno;
    const std::int64_t now_ms = steady_ms();
    if (signals_seen == 0 || now_ms - counted_signal_ms > same_signal_ms) {
        signals_seen = signals_seen + 1;
        counted_signal_ms = now_ms;
        // A full pipe wakes as well.
        static_cast<void>(!write(signal_writer, "", 1));
    }
    errno = saved_errno;
}

}  // namespace

constexpr int StopSignals::signals_[];

StopSignals::StopSignals() {
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) {
        throw std::system_error(errno, std::generic_category(), "pipe");
    }
    reader_.reset(ends[0]);
    writer_.reset(ends[1]);
    signals_seen = 0;
    signal_writer = ends[1];
    for (int i = 0; i < 3; ++i) {
        struct sigaction action = {};
        action.sa_handler = note_signal;
        sigfillset(&action.sa_mask);  // one at a time
        sigaction(signals_[i], nullptr, &old_[i]);
        if (old_[i].sa_handler != SIG_IGN) {
            sigaction(signals_[i], &action, nullptr);
        }
    }
}

StopSignals::~StopSignals() {
    for (int i = 0; i < 3; ++i) {
        sigaction(signals_[i], &old_[i], nullptr);
    }
    signal_writer = -1;
}

int StopSignals::count() const {
    return signals_seen;
}

void StopSignals::acknowledge() const {
    char bytes[64];
    while (read(reader_.get(), bytes, sizeof(bytes)) > 0) {
    }
}

void StopSignals::sleep(std::chrono::milliseconds time) const {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + time;
    for (auto now = Clock::now(); now < end; now = Clock::now()) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - now).count();
        // One more, since a wait may end a little early.
        const int slice = left < longest_wait_ms ? static_cast<int>(left) + 1 : longest_wait_ms;
        pollfd wake = {wake_fd(), POLLIN, 0};
        if (poll(&wake, 1, slice) > 0) {
            return;
        }
    }
}
