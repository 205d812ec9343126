#include "plan/text/printable.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <string_view>

#include "kiln/strings.h"

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

// Control and format characters, and the separators of lines: Unicode's Cc, Cf, Zl and Zp.
constexpr struct {
    std::uint32_t first, last;
} unseen[] = {
    {0x0, 0x1F},        {0x7F, 0x9F},       {0xAD, 0xAD},       {0x600, 0x605},
    {0x61C, 0x61C},     {0x6DD, 0x6DD},     {0x70F, 0x70F},     {0x890, 0x891},
    {0x8E2, 0x8E2},     {0x180E, 0x180E},   {0x200B, 0x200F},   {0x2028, 0x202E},
    {0x2060, 0x2064},   {0x2066, 0x206F},   {0xFEFF, 0xFEFF},   {0xFFF9, 0xFFFB},
    {0x110BD, 0x110BD}, {0x110CD, 0x110CD}, {0x13430, 0x1343F}, {0x1BCA0, 0x1BCA3},
    {0x1D173, 0x1D17A}, {0xE0001, 0xE0001}, {0xE0020, 0xE007F},
};

bool is_unseen(std::uint32_t code) {
    return std::any_of(std::begin(unseen), std::end(unseen), [&](const auto& range) {
        return code >= range.first && code <= range.last;
    });
}

// "\\x1b" for a byte, "\\u202e" for a character.
std::string escape(char kind, int digits, unsigned code) {
    char text[16];
    std::snprintf(text, sizeof text, "\\%c%0*x", kind, digits, code);
    return text;
}

std::string escape_byte(std::string_view text) {
    return escape('x', 2, byte_at(text, 0));
}

std::string escape_character(std::uint32_t code) {
    return code > 0xFFFF ? escape('U', 8, code) : escape('u', 4, code);
}

// JSON has four digits and no more: a pair for what is beyond.
std::string escape_in_json(std::uint32_t code) {
    if (code <= 0xFFFF) {
        return escape('u', 4, code);
    }
    code -= 0x10000;
    return escape('u', 4, 0xD800 + (code >> 10)) + escape('u', 4, 0xDC00 + (code & 0x3FFU));
}

// The text with what `replace` makes of each character, given with the text from it on; an empty
// one leaves it.
template <class Replace>
std::string replaced(std::string_view rest, Replace replace) {
    std::string shown;
    while (!rest.empty()) {
        const Character c = decode(rest);
        const std::size_t size = std::max<std::size_t>(c.size, 1);
        const std::string other = replace(c, rest);
        shown += other.empty() ? std::string(rest.substr(0, size)) : other;
        rest.remove_prefix(size);
    }
    return shown;
}

}  // namespace

std::string printable(const std::string& text) {
    return replaced(text, [](const Character& c, std::string_view rest) -> std::string {
        if (rest[0] == '\n') {
            return "\\n";
        }
        if (c.size == 0 || (c.size == 1 && is_unseen(c.code))) {
            return escape_byte(rest);
        }
        return is_unseen(c.code) ? escape_character(c.code) : "";
    });
}

std::string harmless_lines(const std::string& text) {
    return replaced(text, [](const Character& c, std::string_view rest) -> std::string {
        if (c.size > 1) {
            return is_unseen(c.code) ? escape_character(c.code) : "";
        }
        const bool is_blank = rest[0] == '\n' || rest[0] == '\t' || rest.substr(0, 2) == "\r\n";
        return !is_blank && is_unseen(byte_at(rest, 0)) && byte_at(rest, 0) != 0xAD
                   ? escape_byte(rest)
                   : "";
    });
}

std::string printable_json(const std::string& json) {
    return replaced(json, [](const Character& c, std::string_view rest) -> std::string {
        return rest[0] != '\n' && c.size > 0 && is_unseen(c.code) ? escape_in_json(c.code) : "";
    });
}

bool has_control_characters(const std::string& text) {
    std::string_view rest = text;
    while (!rest.empty()) {
        const Character c = decode(rest);
        if (c.size > 0 && (c.code < 0x20 || (c.code >= 0x7F && c.code < 0xA0))) {
            return true;
        }
        rest.remove_prefix(std::max<std::size_t>(c.size, 1));
    }
    return false;
}

std::string grouped(std::int64_t number) {
    std::string text = std::to_string(number);
    const std::size_t begin = number < 0 ? 1 : 0;
    for (std::size_t at = text.size(); at > begin + 3;) {
        at -= 3;
        text.insert(at, ",");
    }
    return text;
}

std::size_t columns_of(const std::string& text) {
    std::size_t columns = 0;
    for (const char c : text) {
        columns += (static_cast<unsigned char>(c) & 0xC0U) != 0x80 ? 1 : 0;
    }
    return columns;
}

std::string padded(const std::string& text, std::size_t columns) {
    const std::size_t taken = columns_of(text);
    return text + std::string(taken < columns ? columns - taken : 1, ' ');
}

std::string size_text(double bytes) {
    if (bytes < 0) {
        return "-" + size_text(-bytes);
    }
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
