// Text for a terminal, in lines that fit it.
#pragma once

#include <cstddef>
#include <string>

constexpr std::size_t terminal_columns = 80;

// The printable text in lines of at most so many columns, each ending in a newline, broken at
// blanks: the first line behind `first_indent`, the others behind `indent`. A word that is longer
// than a line stays whole, so that a path can still be copied; the terminal wraps it.
std::string wrapped(const std::string& text, const std::string& first_indent,
                    const std::string& indent, std::size_t columns = terminal_columns);
