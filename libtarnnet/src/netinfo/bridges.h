// The bridges of the host and their ports, from "/sys/class/net".
#pragma once

// Classifies the bridges and tells each port its bridge. The library lock is held.
void read_bridges(void);
