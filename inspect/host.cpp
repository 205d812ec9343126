#include "inspect/host.h"

#include <unistd.h>

std::optional<std::string> kernel_host_name() {
    char buffer[1024] = "";
    if (gethostname(buffer, sizeof buffer) != 0) {
        return {};
    }
    buffer[sizeof buffer - 1] = '\0';  // a name that was cut need not have an end
    return buffer;
}

std::int64_t kernel_physical_pages() {
    return sysconf(_SC_PHYS_PAGES);
}
