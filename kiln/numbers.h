// Conversions and arithmetic that are defined for every input and give the same result on every
// machine, where the language leaves the result open. None of them changes errno.
#pragma once

#include <cstdint>

namespace Kiln {

// The leading decimal number of a text: optional white space, an optional sign, digits; 0 without
// digits. Too large a number becomes the nearest 64-bit one.
std::int64_t leading_int64(const char* text);

// The low 32 bits of leading_int64. The command outputs and status files are read with it.
std::int32_t leading_int(const char* text);

// 32-bit signed arithmetic that wraps around.
std::int32_t wrap_add(std::int32_t a, std::int32_t b);
std::int32_t wrap_sub(std::int32_t a, std::int32_t b);
std::int32_t wrap_mul(std::int32_t a, std::int32_t b);

// Truncation toward zero, clamped: INT32_MAX from 2^31 up, INT32_MIN for anything too low and for
// NaN.
std::int32_t truncate_to_int32(float value);

// Truncation toward zero. From 2^63 up: 2^63 is subtracted, the rest converted and the top bit set.
// A negative value gives its signed 64-bit truncation taken as unsigned. What fits neither way, NaN
// included, gives 2^63.
std::uint64_t truncate_to_uint64(float value);

}  // namespace Kiln
