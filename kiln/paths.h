// Where this folder finds what it asks the kernel for. The defaults are the real host; only tests
// hand in others.
#pragma once

namespace Kiln {

struct Paths {
    // Begins with '0' when the names of core dumps do not carry the process id.
    const char* core_uses_pid = "/proc/sys/kernel/core_uses_pid";
    // Lists the open descriptors of whoever reads it.
    const char* own_descriptors = "/proc/self/fd";
    const char* null_device = "/dev/null";
};

}  // namespace Kiln
