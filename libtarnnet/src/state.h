// The process-wide state of the library, and its start.
//
// Used by every public entry, by the locks and by the readers of the host.
#pragma once

#include <semaphore.h>
#include <time.h>

#include <atomic>

#include "host.h"
#include "tarnnet.h"
#include "vlan_naming.h"

namespace tarnnet {

// Nothing in it has a destructor: callers may use the library until the process is gone.
struct library_state {
    int init_code = TARNNET_ERR_STATE;    // 0 once the start succeeded
    sem_t semaphore = {};                 // serialises the callers within the process
    bool suse = false;                    // whether this is a SUSE host
    int vlan_naming = VLAN_RAW_NO_PAD;    // the kernel's naming style
    int lock_fd = -1;                     // open lock file, or -1
    time_t conf_time = 0;                 // of the configuration as its writer left it; never set
    std::atomic<bool> log_off = {false};  // see tarnnet_set_log()
    host_source host;
};
extern library_state state;

// Sets the library up, once. Returns 0, or TARNNET_ERR_STATE when that failed; the next call tries
// again then. (In start.cpp: the start is logged, and the log looks into the state.)
int init_libtarnnet_state();

}  // namespace tarnnet
