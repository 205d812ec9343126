#include "kiln/process_setup.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace {

void raise_stack_limit() {
    rlimit limit{};
    if (getrlimit(RLIMIT_STACK, &limit) == 0 && limit.rlim_cur != limit.rlim_max) {
        limit.rlim_cur = limit.rlim_max;
        setrlimit(RLIMIT_STACK, &limit);
    }
}

// A pipe or socket that took a standard descriptor's place would receive what is meant for it. The
// place is taken by one that refuses its use, so that a lost output is still noticed.
void fill_closed_standard_descriptors() {
    for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
        if (fcntl(fd, F_GETFD) == -1) {
            open("/dev/null", fd == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

}  // namespace

void prepare_process() {
    const int saved_errno = errno;  // the time spans of the command line must not find ours
    fill_closed_standard_descriptors();
    setenv("LC_ALL", "C", 1);
    raise_stack_limit();
    errno = saved_errno;
}
