// The library's start. It stands above the log, which needs the state but not its start.
#include <pthread.h>
#include <unistd.h>

#include "kind_slots.h"
#include "log.h"
#include "state.h"

namespace tarnnet {

namespace {

// The semaphore cannot guard its own start.
pthread_mutex_t start_mutex = PTHREAD_MUTEX_INITIALIZER;

int start_once() {
    if (state.init_code == 0) {
        return 0;
    }
    stamp_kind_slots();
    if (sem_init(&state.semaphore, 0, 1) != 0) {
        return TARNNET_ERR_STATE;
    }
    state.suse = access(state.host.suse_release, F_OK) == 0;
    // The message brings a line end of its own: an empty line in the log follows every start.
    tarnnetlog("init_libtarnnet_state\n");
    state.init_code = 0;
    return 0;
}

}  // namespace

int init_libtarnnet_state() {
    pthread_mutex_lock(&start_mutex);
    const int code = start_once();
    pthread_mutex_unlock(&start_mutex);
    return code;
}

}  // namespace tarnnet
