#include "plan/text/printable.h"

#include <cstdio>
#include <string_view>

namespace {

struct Character {
    std::uint32_t code = 0;
    std::size_t size = 0;  // bytes; 0 for what is no UTF-8
};

unsigned byte_at(std::string_view text, std::size_t at) {
    return at < text.size() ? static_cast<unsigned char>(text[at]) : 0U;
}

// The bytes of a sequence that its first byte announces; 0 for a byte that begins none.
std::size_t announced_size(unsigned first) {
    if (first < 0x80) {
        return 1;
    }
    if (first >= 0xC2 && first <= 0xF4) {
        return first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    }
    return 0;
}

// Refuses what is written longer than it need be, halves of pairs, and codes beyond the last.
Character decode(std::string_view text) {
    const std::size_t size = announced_size(byte_at(text, 0));
    if (size <= 1) {
        return {byte_at(text, 0), size};
    }
    std::uint32_t code = byte_at(text, 0) & (0xFFU >> (size + 1));
    for (std::size_t i = 1; i < size; ++i) {
        if ((byte_at(text, i) & 0xC0U) != 0x80) {
            return {};
        }
        code = (code << 6) | (byte_at(text, i) & 0x3FU);
    }
    const bool too_long = (size == 3 && code < 0x800) || (size == 4 && code < 0x10000);
    const bool no_character = (code >= 0xD800 && code <= 0xDFFF) || code > 0x10FFFF;
    return too_long || no_character ? Character{} : Character{code, size};
}

bool is_unseen(std::uint32_t code) {
    return code < 0x20 || (code >= 0x7F && code < 0xA0) || code == 0x61C ||
           (code >= 0x200B && code <= 0x200F) || (code >= 0x2028 && code <= 0x202E) ||
           (code >= 0x2066 && code <= 0x2069) || code == 0xFEFF;
}

// "\\x1b" for a byte, "\\u202e" for a character.
std::string escape(char kind, int digits, unsigned code) {
    char text[16];
    std::snprintf(text, sizeof text, "\\%c%0*x", kind, digits, code);
    return text;
}

}  // namespace

std::string printable(const std::string& text) {
    std::string shown;
    std::string_view rest = text;
    while (!rest.empty()) {
        const Character c = decode(rest);
        if (c.size == 0 || (c.size == 1 && is_unseen(c.code))) {
            shown += rest[0] == '\n' ? "\\n" : escape('x', 2, byte_at(rest, 0));
        } else if (is_unseen(c.code)) {
            shown += escape('u', 4, c.code);
        } else {
            shown += rest.substr(0, c.size);
        }
        rest.remove_prefix(c.size == 0 ? 1 : c.size);
    }
    return shown;
}

std::size_t columns_of(const std::string& text) {
    std::size_t columns = 0;
    for (const char c : text) {
        columns += (static_cast<unsigned char>(c) & 0xC0U) != 0x80 ? 1 : 0;
    }
    return columns;
}

std::string grouped(std::int64_t number) {
    constexpr std::size_t group = 3;
    std::string text = std::to_string(number);
    const std::size_t first = number < 0 ? 1 : 0;
    for (std::size_t at = text.size(); at > first + group;) {
        at -= group;
        text.insert(at, ",");
    }
    return text;
}

std::string size_text(double bytes) {
    const char* const units[] = {"bytes", "KiB", "MiB", "GiB", "TiB", "PiB", "EiB"};
    std::size_t unit = 0;
    while (bytes >= 1024 && unit < 6) {
        bytes /= 1024;
        ++unit;
    }
    char text[32];
    std::snprintf(text, sizeof text, "%.*f %s", unit > 0 && bytes < 100 ? 1 : 0, bytes,
                  units[unit]);
    return text;
}
