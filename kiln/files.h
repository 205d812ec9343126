// Reading whole files, writing whole buffers, and descriptor flags.
#pragma once

#include <cstddef>
#include <string>

namespace Kiln {

// Reads the whole file, whatever size the file system reports for it. Returns 0 or the system error
// number. A file that cannot be opened leaves `out` untouched; after a read error `out` holds what
// had been read before.
int get_file(const std::string& path, std::string& out);

// Adds O_NONBLOCK to the status flags. Returns -1 with errno set on failure.
int setFDNonblock(int fd);

// Writes everything, going on after partial and interrupted writes. Returns the number of bytes
// that could not be written; errno tells why when that is not 0.
std::size_t write_all(int fd, const char* data, std::size_t size);

}  // namespace Kiln
