// Files that anybody may have put there: read without waiting for anybody and without waking a
// device, and no more of them than is wanted.
#pragma once

#include <cstdint>
#include <string>

#include "kiln/owners.h"

namespace Kiln {

// A file that is open for reading, or the trouble in words: "No such file or directory", "it is a
// FIFO". `error` is the system error number, and 0 where only the kind is wrong.
struct PlainFile {
    Descriptor fd;
    bool is_pipe = false;
    std::uint64_t size = 0;  // bytes, as far as the file system tells
    int error = 0;
    std::string trouble;
};

// Opens a regular file, through whatever links, or a pipe without a name, such as a shell makes for
// <(zcat file.gz): somebody has its other end already. A FIFO, a socket, a device or a folder is
// not even opened.
PlainFile open_plain_file(const std::string& path);

struct PlainText {
    std::string text;
    bool cut = false;  // there is more
    int error = 0;     // and trouble: as above, and there is no text
    std::string trouble;
};

// The first bytes of such a file, so many at most.
PlainText read_plain_file(const std::string& path, std::size_t most_bytes);

}  // namespace Kiln
