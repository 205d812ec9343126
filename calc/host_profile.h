// The profile of one run: what was measured on the host and what the inspections noted about it.
// Filled by the steps of TarnHWCalc, read by the computation of the configuration and by the entry.
// A plain value, copied whole.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "inspect/records.h"

// The host profile. The counters are signed and hold the largest value seen; they start at 0.
struct PhysParams {
    std::int32_t numproc = 0;
    float avnumproc = 0.0F;  // running average of numproc over the passes
    std::int32_t numtcpsock = 0;
    std::int32_t numothersock = 0;
    std::int32_t numfile = 0;
    std::int32_t numpty = 0;
    std::int32_t privvmpages = 0;  // 4-KiB pages
    std::int32_t lockedpages = 0;  // 4-KiB pages
    std::int32_t shmpages = 0;     // pages, as ipcs counts them
    std::int32_t numflock = 0;
    std::int32_t numiptent = 0;
    std::int32_t diskspace = 0;  // KiB
    std::int32_t diskinodes = 0;
    std::int32_t dcachesize = 0;  // stays 0 here; set in the computation's own copy
    std::int32_t quotaugidlimit = 0;
    std::string distribution;
    NetIfaceList ifaces;
    std::string hostname;
    std::vector<std::string> spare_strings;  // never filled
    TarnACalculateHWNodeNotes notes;
    NSAttrs ns_attrs;
    bool nfs_used = false;  // a file system of type "nfs" is mounted
};

// What diskinodes becomes on a host with reiserfs, which tells no number of inodes.
constexpr std::int32_t reiserfs_diskinodes = 1000000;

// Raises `counter` to `value` if it is lower; signed comparison.
inline void raise_to(std::int32_t& counter, std::int32_t value) {
    if (counter < value) {
        counter = value;
    }
}
