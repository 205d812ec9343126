// The file behind a recording: made, locked and written so that every line in it was written whole.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "kiln/owners.h"
#include "kiln/result.h"

class RecordFile {
public:
    enum class Existing { refuse, append, replace };

    // Makes the file, with mode 0600, or opens an existing one where that is wanted: a regular file
    // under one name, never through a link. Nobody else can record into it as long as it is open.
    // The reason names the file; the others leave that to the caller. A replaced file is empty.
    static Kiln::Result<RecordFile> open(const std::string& path, Existing existing);

    // All of it. What is appended comes behind it.
    Kiln::Result<std::string> read();

    // Appends whole lines and waits until they are on the disk. Returns what went wrong, or an
    // empty text; then nothing of them stays in the file, if that can still be helped.
    std::string append(std::string_view lines);

    // Cuts the file behind its first bytes. Returns as append().
    std::string cut(std::uint64_t size);

private:
    explicit RecordFile(Kiln::Descriptor fd);

    Kiln::Descriptor fd_;
    std::uint64_t size_ = 0;
};
