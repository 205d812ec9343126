// Texts of unknown origin for a terminal, and numbers for a person.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// The text with everything that could move a cursor, change a colour or turn the line around
// written as an escape: control characters, the marks of direction, and bytes that are no UTF-8.
std::string printable(const std::string& text);

// How many columns a printable text takes: its characters, each counted as one.
std::size_t columns_of(const std::string& text);

// "1,503"
std::string grouped(std::int64_t number);

// "17.3 GiB"; below 1024 "512 bytes".
std::string size_text(double bytes);
