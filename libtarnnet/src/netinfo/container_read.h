// The live read of containers, through the platform's container-control library. Without that
// library there are no containers, and nothing here does anything.
#pragma once

#include <stdint.h>

#include "netinfo/live_read.h"
#include "owners.h"

namespace tarnnet {

// Over the pipe from the container goes a link as four lines of text: its name, its addresses, its
// hardware address or nothing, its flags in decimal.
constexpr int link_lines = 4;

// Takes the four lines, without their line ends, apart. What is too long is cut.
void parse_link_lines(const owned_text lines[link_lines], link_facts* facts);

// Takes what a child in a container writes into the pipe, to its end, into the container's records.
// Closes the descriptor. The library lock is held, here and below.
void take_container_links(int fd, uint32_t veid);

// Reads the links inside a container into its records.
void read_container_links(uint32_t flags, uint32_t veid);

// Reads every running container as an origin of its own, the one listed last first.
void read_running_containers(uint32_t flags);

// Opens and reads the configuration of a container, of which nothing is taken.
void read_container_conf(uint32_t veid);

}  // namespace tarnnet
