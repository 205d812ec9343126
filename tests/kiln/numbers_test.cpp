#include "kiln/numbers.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cmath>
#include <limits>
#include <tuple>

namespace {

TEST(Numbers, LeadingNumbersOfTexts) {
    const std::tuple<const char*, std::int64_t, std::int32_t> cases[] = {
        {" \t\n\v\f\r+12kB", 12, 12},
        {"0x10", 0, 0},
        {"2147483648", 2147483648, INT32_MIN},
        {"9223372036854775808", INT64_MAX, -1},
        {"-99999999999999999999", INT64_MIN, 0},
    };
    errno = 0;
    for (const auto& [text, wide, narrow] : cases) {
        EXPECT_EQ(Kiln::leading_int64(text), wide) << text;
        EXPECT_EQ(Kiln::leading_int(text), narrow) << text;
    }
    EXPECT_EQ(errno, 0);
}

TEST(Numbers, TruncationOfFloats) {
    constexpr std::uint64_t top = std::uint64_t{1} << 63;
    constexpr float infinity = std::numeric_limits<float>::infinity();
    // Next to 2^31 the floats are 128 apart, next to 2^63 they are 2^39 below and 2^40 above.
    const std::tuple<float, std::int32_t, std::uint64_t> cases[] = {
        {-1.99F, -1, UINT64_MAX},
        {2147483520.0F, 2147483520, 2147483520},
        {2147483648.0F, INT32_MAX, 2147483648},
        {-2147483904.0F, INT32_MIN, UINT64_MAX - 2147483903},
        {std::nextafterf(0x1p63F, 0.0F), INT32_MAX, top - (std::uint64_t{1} << 39)},
        {std::nextafterf(0x1p63F, infinity), INT32_MAX, top + (std::uint64_t{1} << 40)},
        {infinity, INT32_MAX, top},
        {-infinity, INT32_MIN, top},
        {std::numeric_limits<float>::quiet_NaN(), INT32_MIN, top},
    };
    for (const auto& [value, narrow, wide] : cases) {
        EXPECT_EQ(Kiln::truncate_to_int32(value), narrow) << value;
        EXPECT_EQ(Kiln::truncate_to_uint64(value), wide) << value;
    }
}

}  // namespace
