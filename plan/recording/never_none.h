// What no host has none of: whoever counts none was not shown them.
#pragma once

#include <algorithm>
#include <iterator>

#include "calc/counts.h"

// The one that counts is a process, with memory and open files.
inline bool is_never_none(CountField count) {
    constexpr CountField fields[] = {&PhysParams::numproc, &PhysParams::numfile,
                                     &PhysParams::privvmpages};
    return std::find(std::begin(fields), std::end(fields), count) != std::end(fields);
}
