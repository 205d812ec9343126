// EnvConfig: the text of the container configuration, which only grows by whole lines.
#pragma once

#include <cstdint>
#include <string>

class EnvConfig {
public:
    // Appends NAME="barrier:limit". The numbers are printed in decimal, unsigned.
    void add_2ul_param(const char* name, std::uint64_t barrier, std::uint64_t limit);

    // Appends NAME="value".
    void add_ul_param(const char* name, std::uint64_t value);

    // Appends NAME="value", the value as it stands; nothing for a null or empty value.
    void add_param(const char* name, const char* value);

    const std::string& text() const { return text_; }

private:
    std::string text_;
};
