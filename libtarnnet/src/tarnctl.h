// The calls of the platform's container-control library that this library makes.
//
// Assumed: the library brings no header of its own to compare with, so the layouts, the arguments
// and the results below are what its calls are taken to be. Who links it checks them first.
//
// They are weak: a program that is not linked with that library runs all the same, and finds
// nothing for containers. See tarnctl_is_there(). Weak calls do not pull a library in: who wants it
// links it with --no-as-needed, and an archive of it with --whole-archive.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>

#define TARNCTL_WEAK __attribute__((weak, visibility("default")))

extern "C" {

// The state of a container that is up.
constexpr uint32_t TARNCTL_STATE_RUNNING = 4;

// A list of container ids.
struct tarnctl_env_ids {
    uint32_t* ids;
    uint32_t count;
};

// What the configuration of a container says.
struct tarnctl_env_param {
    const char* root;  // directory that the container sees as "/"
};

struct tarnctl_conf;  // an open configuration of a container

// Sets the library up; 0, or negative.
TARNCTL_WEAK int tarnctl_open();

// An empty list, or null. Given back with tarnctl_free_env_ids().
TARNCTL_WEAK tarnctl_env_ids* tarnctl_alloc_env_ids();
TARNCTL_WEAK void tarnctl_free_env_ids(tarnctl_env_ids* list);

// Fills the list with the containers in that state, in rising order; 0, or negative.
TARNCTL_WEAK int tarnctl_get_env_ids_by_state(tarnctl_env_ids* list, uint32_t state);

// Writes the path of a container's configuration, NUL-terminated; 0, or negative.
TARNCTL_WEAK int tarnctl_get_env_conf_path(uint32_t veid, char* path, size_t size);

// Opens a configuration, or null. Given back with tarnctl_conf_close().
TARNCTL_WEAK tarnctl_conf* tarnctl_conf_open(const char* path);
TARNCTL_WEAK void tarnctl_conf_close(tarnctl_conf* conf);

// Reads an open configuration; 0, or negative.
TARNCTL_WEAK int tarnctl_conf_parse(tarnctl_conf* conf);

// What was read, or null. Given back with tarnctl_free_env_param(), before the configuration.
TARNCTL_WEAK tarnctl_env_param* tarnctl_conf_get_env_param(tarnctl_conf* conf);
TARNCTL_WEAK void tarnctl_free_env_param(tarnctl_env_param* param);

// Starts a child process inside the container whose root is given; it runs the function, which has
// the caller's memory and descriptors as they were, and exits with its result. Returns the child's
// process id, which the caller waits for, or -1.
TARNCTL_WEAK pid_t tarnctl_env_exec_fn_async(uint32_t veid, const char* root,
                                             int (*function)(void* argument), void* argument);
}

namespace tarnnet {

// Whether the container-control library is linked, whole.
inline bool tarnctl_is_there() {
    return tarnctl_open != nullptr && tarnctl_alloc_env_ids != nullptr &&
           tarnctl_free_env_ids != nullptr && tarnctl_get_env_ids_by_state != nullptr &&
           tarnctl_get_env_conf_path != nullptr && tarnctl_conf_open != nullptr &&
           tarnctl_conf_close != nullptr && tarnctl_conf_parse != nullptr &&
           tarnctl_conf_get_env_param != nullptr && tarnctl_free_env_param != nullptr &&
           tarnctl_env_exec_fn_async != nullptr;
}

}  // namespace tarnnet
