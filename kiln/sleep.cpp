#include "kiln/sleep.h"

#include <cerrno>
#include <ctime>

namespace Kiln {

void sleep_full(int seconds) {
    // Not sleep(): it rounds what remains to whole seconds, so that a stream of signals would end
    // the wait early.
    timespec remaining = {seconds, 0};
    while (seconds > 0 && nanosleep(&remaining, &remaining) != 0 && errno == EINTR) {
    }
}

}  // namespace Kiln
