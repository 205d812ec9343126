// What the fuzz targets share: the input as text and in sections, and the check of what must hold.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
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

// Ends the run, which the fuzzer reports as a crash with its input, unless the claim holds.
inline void require(bool holds, const char* claim) {
    if (!holds) {
        std::fprintf(stderr, "broken: %s\n", claim);
        std::abort();
    }
}

}  // namespace fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
