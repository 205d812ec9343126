// The file behind a recording: made, locked and written so that every line in it was written whole.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "kiln/owners.h"
#include "kiln/result.h"

class RecordFile {
public:
    enum class Existing { refuse, append, replace };

    // Makes the file, with mode 0600, or opens an existing one where that is wanted: a regular file
    // under one name, never through a link, ours and to be written by nobody else. Nobody else can
    // record into it as long as it is open. The reason names the file; the others leave that to the
    // caller. A replaced file is empty.
    static Kiln::Result<RecordFile> open(const std::string& path, Existing existing);

    // All of it. What is appended comes behind it.
    Kiln::Result<std::string> read();

    // Appends whole lines and waits until they are on the disk. On failure nothing of them stays in
    // the file; where that cannot be helped at once, it is before the next ones are written.
    Kiln::Done append(std::string_view lines);

    // Cuts the file behind its first bytes.
    Kiln::Done cut(std::uint64_t size);

    // Whether the path still leads to the file, and nobody else has changed its size.
    Kiln::Done check_untouched() const;

private:
    RecordFile(Kiln::Descriptor fd, std::string path);

    Kiln::Descriptor fd_;
    std::string path_;
    std::uint64_t size_ = 0;  // of the lines that were written whole
    std::uint64_t end_ = 0;   // of the file: a line that failed may have left a part behind them
};
