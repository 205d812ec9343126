// The process-wide state of the library, and its start.
//
// Used by every public entry, by the locks and by the configuration readers.
#pragma once

#include <semaphore.h>
#include <time.h>

struct libtarnnet_state {
    int init_code;     // 0 once the start succeeded, TARNNET_ERR_STATE before
    sem_t semaphore;   // serialises the callers within the process
    int suse;          // 1 on a SUSE host
    int lock_fd;       // open lock file, or -1
    time_t conf_time;  // configuration file's modification time as its writer left it; never set
};
extern struct libtarnnet_state
    libtarnnet_state;  // NOLINT(bugprone-dynamic-static-initializers): all constants

// Sets the library up, once. Returns 0, or TARNNET_ERR_STATE when that failed; the next call tries
// again then.
int init_libtarnnet_state(void);
