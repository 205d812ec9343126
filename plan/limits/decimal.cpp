#include "plan/limits/decimal.h"

#include <algorithm>

namespace {

constexpr std::uint64_t most_divisor = 100000000;
constexpr std::uint64_t ten = 10;
constexpr double least_factor = 1e-8;
constexpr double most_factor = 1e6;
constexpr double six_digits = 999999.5;  // what would be rounded to seven

}  // namespace

std::string Decimal::text() const {
    const std::string whole = std::to_string(digits / divisor);
    // The digit that is added before the places keeps their zeros.
    const std::string places = std::to_string(divisor + digits % divisor).substr(1);
    return places.empty() ? whole : whole + "." + places;
}

Decimal decimal_of(double factor) {
    // The comparison also sorts out what is no number.
    const double kept = factor >= least_factor ? std::min(factor, most_factor) : least_factor;
    std::uint64_t divisor = most_divisor;
    while (divisor > 1 && kept * static_cast<double>(divisor) >= six_digits) {
        divisor /= ten;
    }
    constexpr double half = 0.5;
    Decimal decimal = {static_cast<std::uint64_t>(kept * static_cast<double>(divisor) + half),
                       divisor};
    while (decimal.divisor > 1 && decimal.digits % ten == 0) {
        decimal.digits /= ten;
        decimal.divisor /= ten;
    }
    return decimal;
}

// In two parts, so that nothing overflows: digits are at most 10^6 and, divided by more than 1,
// have six places, so that part * digits stays below 10^8 * 10^5 * 10^6 = 10^19 < 2^64.
std::int64_t scaled_up(std::int64_t value, Decimal factor, std::int64_t unit, std::int64_t most) {
    const auto number = static_cast<std::uint64_t>(std::max<std::int64_t>(value, 0));
    const std::uint64_t divisor = factor.divisor * static_cast<std::uint64_t>(unit);
    const auto cap = static_cast<std::uint64_t>(most);
    const std::uint64_t whole = number / divisor;
    if (whole > cap / factor.digits) {
        return most;
    }
    const std::uint64_t part = number % divisor * factor.digits;
    const std::uint64_t sum = whole * factor.digits + part / divisor + (part % divisor > 0 ? 1 : 0);
    return static_cast<std::int64_t>(std::min(sum, cap));
}
