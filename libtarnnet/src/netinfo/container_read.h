// The live read of containers, through the platform's container-control library. Without that
// library there are no containers, and nothing here does anything.
#pragma once

#include <stdint.h>

#include "netinfo/live_read.h"
#include "owners.h"
#include "tarnctl.h"

namespace tarnnet {

// Over the pipe from the container goes a link as four lines of text: its name, its addresses, its
// hardware address or nothing, its flags in decimal:
//
//     eth0
//     10.1.0.101/24 fd00::65/64
//     00:18:51:0c:7a:02
//     69699
constexpr int link_lines = 4;

// Takes the four lines, without their line ends, apart. What is too long is cut.
void parse_link_lines(const owned_text lines[link_lines], link_facts* facts);

// Takes what a child in a container writes into the pipe, to its end, into the container's records.
// Closes the descriptor. The library lock is held, here and below.
void take_container_links(int fd, uint32_t veid);

// Reads the links inside a container into its records.
void read_container_links(uint32_t flags, uint32_t veid);

// The ids of the containers that run, in the order in which the container-control library lists
// them; none when they cannot be listed.
class running_containers {
public:
    running_containers();
    running_containers(running_containers&&) = delete;
    ~running_containers();

    uint32_t count() const { return count_; }
    uint32_t veid(uint32_t i) const;

private:
    tarnctl_env_ids* list_ = nullptr;
    uint32_t count_ = 0;
};

// Opens and reads the configuration of a container, of which nothing is taken.
void read_container_conf(uint32_t veid);

}  // namespace tarnnet
