// Reading the host's own files: the mount tables, the kernel's lists, the resolver's settings. The
// one place that decides which of them are not to be read.
#pragma once

#include <string>

// Reads the whole file into `out`. Returns 0 or the system error number. What may have no end or
// keep us waiting for others (a FIFO, a device) is refused with EOPNOTSUPP, so that no run hangs on
// what somebody has put in a file's place; the null device is read as the empty file that it stands
// for. A file that cannot be opened or is refused leaves `out` untouched; after a read error `out`
// holds what had been read before.
int read_host_file(const std::string& path, std::string& out);
