#include "kiln/file_size_signal.h"

#include <csignal>

namespace Kiln {

namespace {

struct sigaction found = {};
bool ignored = false;

}  // namespace

void ignore_file_size_signal() {
    if (ignored) {
        return;
    }
    struct sigaction action = {};
    sigemptyset(&action.sa_mask);
    action.sa_handler = SIG_IGN;
    ignored = sigaction(SIGXFSZ, &action, &found) == 0;
}

void restore_file_size_signal() {
    if (ignored) {
        sigaction(SIGXFSZ, &found, nullptr);
    }
}

}  // namespace Kiln
