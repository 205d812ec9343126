// The time spans of the command line.
#include <optional>

#include "calc/arguments.h"
#include "fuzz/support.h"

namespace {

// The number of a term, modulo 2^32; none for one that is no number of 64 bits. A unit alone is 0.
std::optional<std::uint32_t> number_of(std::string text) {
    if (text.empty()) {
        return 0;
    }
    text.erase(0, text.find_first_not_of(" \t\n\v\f\r"));
    const bool negative = text[0] == '-';
    text.erase(0, negative || text[0] == '+' ? 1 : 0);
    if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos) {
        return {};
    }
    text.erase(0, text.find_first_not_of('0'));
    const std::uint64_t number = text.size() > 19 ? UINT64_MAX : std::stoull("0" + text);
    if (number > static_cast<std::uint64_t>(INT64_MAX) + (negative ? 1 : 0)) {
        return {};
    }
    return static_cast<std::uint32_t>(negative ? 0 - number : number);
}

// The sum of the terms, modulo 2^32; none for a span that is not made of terms.
std::optional<std::uint32_t> total_of(std::string span) {
    const std::string units = "dhms";
    constexpr std::uint32_t unit_seconds[] = {86400, 3600, 60, 1};
    std::uint32_t total = 0;
    while (!span.empty()) {
        const std::size_t end = span.find_first_of(units);
        const auto number = number_of(span.substr(0, end));
        if (end == std::string::npos || !number) {
            return {};
        }
        total += *number * unit_seconds[units.find(span[end])];
        span.erase(0, end + 1);
    }
    return total;
}

}  // namespace

void try_input(fuzz::Input input) {
    const std::string span = input.text().c_str();
    const std::optional<std::uint32_t> total = total_of(span);
    const bool accepted = total && *total <= INT32_MAX;
    int seconds = -1;
    errno = 0;
    const int result = parse_time(span.c_str(), &seconds);
    require(result == (accepted ? 0 : -1), "a span of terms, not negative in all");
    require(seconds == static_cast<int>(accepted ? *total : 0), "the sum, or 0 when refused");
    errno = ERANGE;
    require(parse_time(span.c_str(), &seconds) == (span.empty() ? 0 : -1),
            "a system error left by earlier code fails every span but the empty one");
}
