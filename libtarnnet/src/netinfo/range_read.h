// The live read of the host, of a container, or of a range of them. The library lock is held by the
// caller of each function here.
#pragma once

#include <stdint.h>

namespace tarnnet {

// Reads the host (0), or a container, as an origin of its own: what this read does not find again
// is dropped.
void read_single_ifconfioctl(uint32_t flags, uint32_t veid);

// Reads the containers min_veid..max_veid one by one, or, when these are more than twelve, all
// containers that run, without the host.
void read_ifconfioctl(uint32_t flags, uint32_t min_veid, uint32_t max_veid);

}  // namespace tarnnet
