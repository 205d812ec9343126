// Opening and reading files, writing whole buffers, and descriptor flags.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>

#include "kiln/owners.h"

namespace Kiln {

// Opens a file without waiting for anybody, such as the other end of a FIFO; reads and writes do
// not wait either. Commands do not inherit it and it never becomes the controlling terminal. An
// interrupted open is repeated. Without a descriptor errno tells why (ENXIO for a FIFO to be
// written that nobody reads).
Descriptor open_at_once(const std::string& path, int flags, mode_t mode = 0);

// The same for a path that begins at an open folder.
Descriptor open_at_once(int folder_fd, const std::string& path, int flags, mode_t mode = 0);

// Reads the whole file, of whatever kind: it waits for who writes to a FIFO, and for the end of
// what they write. Returns 0 or the system error number. A file that cannot be opened leaves `out`
// untouched; after a read error `out` holds what had been read before.
int get_file(const std::string& path, std::string& out);

// One read, which begins again after a signal. Returns the number of bytes, 0 at the end, or -1
// with errno set.
ssize_t read_some(int fd, char* into, std::size_t size);

// Appends everything up to the end of the file, whatever size the file system reports for it: under
// /proc that is 0. Returns 0 or the system error number; `out` keeps what had been read before.
int append_rest(int fd, std::string& out);

// Adds O_NONBLOCK to the status flags. Returns -1 with errno set on failure.
int setFDNonblock(int fd);

// Writes everything, going on after partial and interrupted writes. Returns the number of bytes
// that could not be written; errno tells why when that is not 0.
std::size_t write_all(int fd, const char* data, std::size_t size);

}  // namespace Kiln
