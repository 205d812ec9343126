// The configured read, which precedes the live one.
#pragma once

#include <stdint.h>

namespace tarnnet {

// Reads the configuration of the host (0) or of a container into its records, as an origin of its
// own. The library lock is held.
void read_single_conf(uint32_t flags, uint32_t veid);

}  // namespace tarnnet
