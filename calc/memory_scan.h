// The memory scan: one snapshot of the virtual and locked memory of every process.
#pragma once

#include <cstdint>

#include "calc/process_observer.h"
#include "inspect/host.h"
#include "kiln/result.h"

struct MemoryPages {
    std::int32_t privvmpages = 0;  // of 4 KiB, as many as the machine has at most
    std::int32_t lockedpages = 0;  // of 4 KiB
};

// The totals of this moment, or why the processes cannot be listed. A process that cannot be read
// is left out; the observer, which stays the caller's, sees every other one.
Kiln::Result<MemoryPages> scan_memory(const Host& host, ProcessObserver* observer = nullptr);

// What a pass and the calculator make of it: raises both counts to the totals of this moment, and
// leaves them as they are when the processes cannot be listed.
Kiln::Done raise_memory(const Host& host, std::int32_t& privvmpages, std::int32_t& lockedpages,
                        ProcessObserver* observer = nullptr);
