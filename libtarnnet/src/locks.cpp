// The library lock: a semaphore within the process and, for those who ask for it, a lock file
// between processes.
#include <errno.h>
#include <fcntl.h>
#include <semaphore.h>
#include <sys/file.h>
#include <unistd.h>

#include "log.h"
#include "state.h"
#include "tarnnet.h"

namespace {

const char lock_path[] = "/tmp/tarnnetcfg.lck";

// A signal does not end the wait.
void wait_for_turn(void) {
    while (sem_wait(&libtarnnet_state.semaphore) != 0 && errno == EINTR) {
    }
}

int lock_file(int operation, const char* name) {
    const int fd = open(lock_path, O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0) {
        // The semaphore stays taken here, unlike below; callers release in this case.
        return TARNNET_ERR_STATE;
    }
    if (flock(fd, operation) != 0) {
        close(fd);
        tarnnetlog("libtarnnet: %s failed", name);
        sem_post(&libtarnnet_state.semaphore);
        return TARNNET_ERR_LOCK;
    }
    libtarnnet_state.lock_fd = fd;
    tarnnetlog("libtarnnet: %s done", name);
    return 0;
}

}  // namespace

int grab_shared_tarnnetlock(int in_process_only) {
    const int code = init_libtarnnet_state();
    if (code != 0) {
        return code;
    }
    wait_for_turn();
    if (in_process_only != 0) {
        return 0;
    }
    tarnnetlog("libtarnnet: grab_shared_tarnnetlock");
    return lock_file(LOCK_SH, "grab_shared_tarnnetlock");
}

int grab_excl_tarnnetlock(void) {
    const int code = init_libtarnnet_state();
    if (code != 0) {
        return code;
    }
    wait_for_turn();
    return lock_file(LOCK_EX, "grab_excl_tarnnetlock");
}

void release_tarnnetlock(void) {
    const int fd = libtarnnet_state.lock_fd;
    if (fd >= 0) {
        tarnnetlog("libtarnnet: release_tarnnetlock");
        const int result = flock(fd, LOCK_UN);
        tarnnetlog("libtarnnet: release_tarnnetlock %s", result != 0 ? "failed" : "done");
        close(fd);
        libtarnnet_state.lock_fd = -1;
    }
    sem_post(&libtarnnet_state.semaphore);
}
