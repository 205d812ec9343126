// The bridges of the host and their ports, from "/sys/class/net".
#pragma once

namespace tarnnet {

// Classifies the bridges and tells each port its bridge. The library lock is held.
void read_bridges();

}  // namespace tarnnet
