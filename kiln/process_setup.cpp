#include "kiln/process_setup.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>

#include "kiln/file_size_signal.h"
#include "kiln/paths.h"

namespace {

// Linux gives a command's arguments a quarter of the limit, 6 MiB at most: more would only take
// the room of the threads that a command starts.
constexpr rlim_t useful_stack_bytes = 24 * 1024 * 1024;

void raise_stack_limit() {
    rlimit limit{};
    if (getrlimit(RLIMIT_STACK, &limit) != 0) {
        return;
    }
    const rlim_t wanted = std::min(limit.rlim_max, useful_stack_bytes);
    if (limit.rlim_cur < wanted) {
        limit.rlim_cur = wanted;
        setrlimit(RLIMIT_STACK, &limit);
    }
}

// A pipe or socket that took a standard descriptor's place would receive what is meant for it. The
// place is taken by one that refuses its use, so that a lost output is still noticed.
void fill_closed_standard_descriptors() {
    for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
        if (fcntl(fd, F_GETFD) == -1) {
            open(Kiln::Paths().null_device, fd == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

}  // namespace

void prepare_process() {
    const int saved_errno = errno;  // the time spans of the command line must not find ours
    fill_closed_standard_descriptors();
    setenv("LC_ALL", "C", 1);
    raise_stack_limit();
    Kiln::ignore_file_size_signal();
    errno = saved_errno;
}
