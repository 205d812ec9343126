#include "plan/record/stop_signals.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <system_error>

namespace {

constexpr int longest_wait_ms = 60000;

volatile std::sig_atomic_t signal_seen = 0;
volatile std::sig_atomic_t signal_writer = -1;

void note_signal(int /*signal_number*/) {
    const int saved_errno = errno;
    signal_seen = 1;
    // A full pipe wakes as well.
    static_cast<void>(!write(signal_writer, "", 1));
    errno = saved_errno;
}

}  // namespace

StopSignals::StopSignals() {
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) {
        throw std::system_error(errno, std::generic_category(), "pipe");
    }
    reader_.reset(ends[0]);
    writer_.reset(ends[1]);
    signal_seen = 0;
    signal_writer = ends[1];
    for (int i = 0; i < 3; ++i) {
        struct sigaction action = {};
        action.sa_handler = note_signal;
        sigfillset(&action.sa_mask);
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

bool StopSignals::requested() const {
    return signal_seen != 0;
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
