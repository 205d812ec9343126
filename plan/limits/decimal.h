// Factors as people write them, so that 10 times 1.2 is 12 and no hair more. Pure.
#pragma once

#include <cstdint>
#include <string>

// digits / divisor; the divisor is a power of ten, no larger than the digits need.
struct Decimal {
    std::uint64_t digits = 1;
    std::uint64_t divisor = 1;

    // "1.2"
    std::string text() const;
};

// The factor to six significant digits and eight places, which is how it was written; kept between
// 0.00000001 and 1,000,000. What is no number gives the least.
Decimal decimal_of(double factor);

// value * factor / unit, rounded up to a whole number, exactly; at most `most`. A negative value
// counts as 0. `unit` is 1 to 100,000.
std::int64_t scaled_up(std::int64_t value, Decimal factor, std::int64_t unit, std::int64_t most);
