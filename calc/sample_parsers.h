// Parsers for the output of the counting commands. Pure functions of the text.
#pragma once

#include <cstdint>
#include <string>

// The number that the output of a counting command ("wc -l") holds; 0 when it is no number.
std::int32_t parse_count(const std::string& text);

// The allocated pages in the output of "ipcs -m -u"; 0 when it does not name them.
std::int32_t parse_shm_pages(const std::string& text);

// The sum of the third column ("Used") over the lines of df's output after the header, wrapping at
// 32 bits. A line that lacks the column adds nothing.
std::int32_t sum_used_column(const std::string& text);
