// Files that anybody may have put there: read without waiting for anybody and without waking a
// device, and no more of them than is wanted.
#pragma once

#include <cstdint>
#include <string>

#include "kiln/owners.h"
#include "kiln/result.h"

namespace Kiln {

struct PlainFile {
    Descriptor fd;  // open for reading
    bool is_pipe = false;
    std::uint64_t size = 0;  // bytes, as far as the file system tells
};

// Opens a regular file, through whatever links, or a pipe without a name, such as a shell makes for
// <(zcat file.gz): somebody has its other end already. A FIFO, a socket, a device or a folder is
// not even opened. The reason is words without the path: "No such file or directory", "it is a
// FIFO"; errno is the system error number then, and 0 where only the kind is wrong.
Result<PlainFile> open_plain_file(const std::string& path);

struct PlainText {
    std::string text;
    bool cut = false;  // there is more
};

// The first bytes of such a file, so many at most. The reason and errno as above.
Result<PlainText> read_plain_file(const std::string& path, std::size_t most_bytes);

}  // namespace Kiln
