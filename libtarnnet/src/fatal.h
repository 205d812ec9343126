// What the library takes for a broken caller: it ends the process in every kind of build.
#pragma once

#include <stdio.h>
#include <stdlib.h>

namespace tarnnet {

inline void fatal_unless(bool condition, const char* expectation) {
    if (!condition) {
        fprintf(stderr, "libtarnnet: assertion failed: %s\n", expectation);
        abort();
    }
}

}  // namespace tarnnet
