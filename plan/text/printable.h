// Texts of unknown origin for a terminal, and numbers for a person.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// The text with everything that could move a cursor, change a colour or turn the line around
// written as an escape: control and format characters, and bytes that are no UTF-8.
std::string printable(const std::string& text);

// Lines that programs read as well, such as paths: newlines (also behind a carriage return), tabs
// and bytes that are no UTF-8 stay, where no terminal acts on them.
std::string harmless_lines(const std::string& text);

// JSON that says the same, with those characters as escapes of JSON.
std::string printable_json(const std::string& json);

// Whether a newline, an escape or another control character is in it.
bool has_control_characters(const std::string& text);

// "12,480"
std::string grouped(std::int64_t number);

// How many columns a printable text takes: its characters, each counted as one.
std::size_t columns_of(const std::string& text);

// The printable text and blanks behind it, one at least, up to so many columns.
std::string padded(const std::string& text, std::size_t columns);

// "17.3 GiB"; below 1024 "512 bytes".
std::string size_text(double bytes);
