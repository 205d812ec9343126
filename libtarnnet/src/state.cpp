#include "state.h"

#include <pthread.h>
#include <unistd.h>

#include "log.h"
#include "netinfo/index.h"
#include "tarnnet.h"

struct libtarnnet_state libtarnnet_state = {TARNNET_ERR_STATE, {}, 0, -1, 0};

namespace {

pthread_mutex_t start_mutex = PTHREAD_MUTEX_INITIALIZER;

int start_once(struct libtarnnet_state* state) {
    if (state->init_code == 0) {
        return 0;
    }
    stamp_index_slots();
    if (sem_init(&state->semaphore, 0, 1) != 0) {
        state->init_code = TARNNET_ERR_STATE;
        return state->init_code;
    }
    state->suse = access("/etc/SuSE-release", F_OK) == 0 ? 1 : 0;
    // The message has a line end of its own, so an empty line follows in the log: kept on purpose.
    tarnnetlog("init_libtarnnet_state\n");
    state->init_code = 0;
    return 0;
}

}  // namespace

int init_libtarnnet_state(void) {
    pthread_mutex_lock(&start_mutex);
    const int code = start_once(&libtarnnet_state);
    pthread_mutex_unlock(&start_mutex);
    return code;
}
