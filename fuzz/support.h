// What the fuzz targets share: the input as text, in sections and as numbers, the check of what
// must hold, and a console that is closed.
#pragma once

#include <fcntl.h>
#include <sanitizer/common_interface_defs.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace fuzz {

inline std::string text_of(const std::uint8_t* data, std::size_t size) {
    return {data, data + size};
}

// The input cut at lines that read "%%" into exactly `count` texts; missing ones are empty.
inline std::vector<std::string> sections(const std::uint8_t* data, std::size_t size,
                                         std::size_t count) {
    constexpr const char* separator = "%%\n";
    std::vector<std::string> texts;
    std::string rest = text_of(data, size);
    while (texts.size() + 1 < count) {
        const std::size_t end = rest.find(separator);
        texts.push_back(rest.substr(0, end));
        rest = end == std::string::npos ? std::string() : rest.substr(end + 3);
    }
    texts.push_back(rest);
    return texts;
}

// Numbers from the input's bytes, with zeros behind its end, and the text that is left.
class Bytes {
public:
    Bytes(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

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

    std::string rest() const { return text_of(data_, size_); }

private:
    const std::uint8_t* data_;
    std::size_t size_;
};

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

// Ends the run, which the fuzzer reports as a crash with its input, unless the claim holds.
inline void require(bool holds, const char* claim) {
    if (!holds) {
        dprintf(console, "broken: %s\n", claim);
        dup2(console, STDERR_FILENO);
        std::abort();
    }
}

}  // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
