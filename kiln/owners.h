// Owners of what the system hands out: descriptors, streams and open directories. Each gives back
// what it holds when it goes away.
#pragma once

#include <dirent.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <utility>

namespace Kiln {

// A file descriptor, or none (-1). Neither closing nor moving changes errno.
class Descriptor {
public:
    explicit Descriptor(int fd = -1) noexcept : fd_(fd) {}
    Descriptor(Descriptor&& other) noexcept : fd_(other.release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        reset(other.release());
        return *this;
    }
    ~Descriptor() { reset(); }

    int get() const noexcept { return fd_; }
    explicit operator bool() const noexcept { return fd_ >= 0; }

    // Leaves the descriptor open and to the caller.
    int release() noexcept { return std::exchange(fd_, -1); }

    // Closes what is held and takes `fd` instead.
    void reset(int fd = -1) noexcept;

private:
    int fd_;
};

struct CloseFile {
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};
struct CloseDirectory {
    void operator()(DIR* directory) const noexcept { closedir(directory); }
};

using File = std::unique_ptr<std::FILE, CloseFile>;
using Directory = std::unique_ptr<DIR, CloseDirectory>;

}  // namespace Kiln
