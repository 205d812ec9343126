// The library lock: a semaphore within the process and, for those who ask for it, a lock file
// between processes.
#include <errno.h>
#include <fcntl.h>
#include <semaphore.h>
#include <sys/file.h>
#include <unistd.h>

#include "log.h"
#include "owners.h"
#include "state.h"
#include "tarnnet.h"

namespace tarnnet {

namespace {

// A signal does not end the wait.
void wait_for_turn() {
    while (sem_wait(&state.semaphore) != 0 && errno == EINTR) {
    }
}

// Anybody may put something in the file's place, as its directory is everybody's: a link there is
// never followed.
int open_lock_file() {
    return open(state.host.lock_file, O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0644);
}

int lock_file(int operation, const char* name) {
    owned_fd fd(open_lock_file());
    if (!fd.is_open()) {
        // The semaphore stays taken here, unlike below; callers release in this case.
        return TARNNET_ERR_STATE;
    }
    if (TEMP_FAILURE_RETRY(flock(fd.get(), operation)) != 0) {
        fd.reset();
        tarnnetlog("libtarnnet: %s failed", name);
        sem_post(&state.semaphore);
        return TARNNET_ERR_LOCK;
    }
    state.lock_fd = fd.release();
    tarnnetlog("libtarnnet: %s done", name);
    return 0;
}

void unlock_file() {
    const owned_fd fd(state.lock_fd);
    state.lock_fd = -1;
    tarnnetlog("libtarnnet: release_tarnnetlock");
    const int result = flock(fd.get(), LOCK_UN);
    tarnnetlog("libtarnnet: release_tarnnetlock %s", result != 0 ? "failed" : "done");
}

}  // namespace

}  // namespace tarnnet

int grab_shared_tarnnetlock(int in_process_only) {
    const int code = tarnnet::init_libtarnnet_state();
    if (code != 0) {
        return code;
    }
    tarnnet::wait_for_turn();
    if (in_process_only != 0) {
        return 0;
    }
    tarnnet::tarnnetlog("libtarnnet: grab_shared_tarnnetlock");
    return tarnnet::lock_file(LOCK_SH, "grab_shared_tarnnetlock");
}

int grab_excl_tarnnetlock(void) {
    const int code = tarnnet::init_libtarnnet_state();
    if (code != 0) {
        return code;
    }
    tarnnet::wait_for_turn();
    // The log gets no line before the wait, unlike for the shared lock.
    return tarnnet::lock_file(LOCK_EX, "grab_excl_tarnnetlock");
}

void release_tarnnetlock(void) {
    // The file first: who is let in within the process may want it too.
    if (tarnnet::state.lock_fd >= 0) {
        tarnnet::unlock_file();
    }
    sem_post(&tarnnet::state.semaphore);
}
