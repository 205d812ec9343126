#include "kiln/sleep.h"

#include <cerrno>
#include <ctime>

namespace Kiln {

void sleep_full(int seconds) {
    // Until a point of time. sleep() rounds what remains to whole seconds and nanosleep() adds the
    // timer's slack to it, so that a stream of signals would cut the wait short or stretch it.
    timespec end = {};
    clock_gettime(CLOCK_MONOTONIC, &end);
    end.tv_sec += seconds;
    while (seconds > 0 && clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &end, nullptr) == EINTR) {
    }
}

}  // namespace Kiln
