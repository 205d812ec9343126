// What the fuzz targets share: the input as text, in sections and as numbers, the check of what
// must hold, and a console that is closed.
#pragma once

#include <fcntl.h>
#include <sanitizer/common_interface_defs.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace fuzz {

class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

    // The next number of the input's bytes, with zeros behind its end.
    template <class Number>
    Number next() {
        Number number{};
        const std::size_t length = std::min(sizeof number, size_);
        if (length > 0) {
            std::memcpy(&number, data_, length);
            data_ += length;
            size_ -= length;
        }
        return number;
    }

    // What is left of it.
    std::string text() const { return {data_, data_ + size_}; }

    // The same, cut at lines that read "%%" into exactly `count` texts; missing ones are empty.
    std::vector<std::string> sections(std::size_t count) const {
        std::vector<std::string> texts(count);
        std::string rest = text();
        for (std::size_t i = 0; i + 1 < count; ++i) {
            const std::size_t end = rest.find("%%\n");
            texts[i] = rest.substr(0, end);
            rest = end == std::string::npos ? "" : rest.substr(end + 3);
        }
        texts.back() = rest;
        return texts;
    }

private:
    const std::uint8_t* data_;
    std::size_t size_;
};

// A copy of exactly that size, aligned for whatever it holds: a read behind it is noticed.
inline std::unique_ptr<char[]> exact_copy(const std::string& bytes) {
    std::unique_ptr<char[]> copy(new char[bytes.size()]);
    bytes.copy(copy.get(), bytes.size());
    return copy;
}

// Where findings are told, whatever becomes of standard error meanwhile.
inline const int console = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);

// No write to standard error succeeds for as long as it lives, and none to standard output from
// then on, which the fuzzer does not use.
class ClosedConsole {
public:
    ClosedConsole() {
        static const int nowhere = open("/dev/null", O_RDONLY | O_CLOEXEC);
        static const int output = dup2(nowhere, STDOUT_FILENO);
        static_cast<void>(output);
        dup2(nowhere, STDERR_FILENO);
        __sanitizer_set_report_fd(reinterpret_cast<void*>(std::intptr_t{console}));
    }
    ~ClosedConsole() { dup2(console, STDERR_FILENO); }
    ClosedConsole(const ClosedConsole&) = delete;
    ClosedConsole& operator=(const ClosedConsole&) = delete;
};

}  // namespace fuzz

// Ends the run, which the fuzzer reports as a crash with its input, unless the claim holds.
inline void require(bool holds, const char* claim) {
    if (!holds) {
        dprintf(fuzz::console, "broken: %s\n", claim);
        dup2(fuzz::console, STDERR_FILENO);
        std::abort();
    }
}

namespace fuzz {

// A file in memory that holds the text, to be read from its start; whoever asks closes it.
inline int file_of(const std::string& text) {
    const int fd = memfd_create("text", MFD_CLOEXEC);
    require(pwrite(fd, text.data(), text.size(), 0) == static_cast<ssize_t>(text.size()), "a file");
    return fd;
}

}  // namespace fuzz

// What a target does with one input.
void try_input(fuzz::Input input);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try_input({data, size});
    return 0;
}
