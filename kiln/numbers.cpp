#include "kiln/numbers.h"

#include <cerrno>
#include <cstdlib>
#include <limits>

namespace Kiln {

namespace {

constexpr float two_to_31 = 2147483648.0F;
constexpr float two_to_63 = 9223372036854775808.0F;
constexpr std::uint64_t top_bit = std::uint64_t{1} << 63;

std::uint32_t bits_of(std::int32_t value) {
    return static_cast<std::uint32_t>(value);
}

// Modulo 2^32 with every compiler that the project knows.
std::int32_t from_bits(std::uint32_t bits) {
    return static_cast<std::int32_t>(bits);
}

// The signed 64-bit truncation; what does not fit gives the lowest number.
std::uint64_t signed_truncation(float value) {
    if (value >= -two_to_63 && value < two_to_63) {
        return static_cast<std::uint64_t>(static_cast<std::int64_t>(value));
    }
    return top_bit;
}

}  // namespace

std::int64_t leading_int64(const char* text) {
    const int saved_errno = errno;
    const long long number = std::strtoll(text, nullptr, 10);
    errno = saved_errno;
    return number;
}

// Cut, not clamped: 2147483648 reads as -2147483648, 4294967297 as 1.
std::int32_t leading_int(const char* text) {
    return from_bits(static_cast<std::uint32_t>(leading_int64(text)));
}

std::int32_t wrap_add(std::int32_t a, std::int32_t b) {
    return from_bits(bits_of(a) + bits_of(b));
}
std::int32_t wrap_sub(std::int32_t a, std::int32_t b) {
    return from_bits(bits_of(a) - bits_of(b));
}
std::int32_t wrap_mul(std::int32_t a, std::int32_t b) {
    return from_bits(bits_of(a) * bits_of(b));
}

// A NaN is in no range and so falls through to the last return, here and above.
std::int32_t truncate_to_int32(float value) {
    if (value >= two_to_31) {
        return std::numeric_limits<std::int32_t>::max();
    }
    if (value >= -two_to_31) {
        return static_cast<std::int32_t>(value);
    }
    return std::numeric_limits<std::int32_t>::min();
}

std::uint64_t truncate_to_uint64(float value) {
    if (value >= two_to_63) {
        return signed_truncation(value - two_to_63) | top_bit;
    }
    return signed_truncation(value);
}

}  // namespace Kiln
