#include "calc/arguments.h"

#include <cerrno>
#include <cstdint>
#include <cstdlib>

#include "kiln/numbers.h"

namespace {

// The seconds of a unit; 0 for a letter that is no unit.
std::int32_t unit_seconds(char letter) {
    switch (letter) {
        case 'd':
            return 86400;
        case 'h':
            return 3600;
        case 'm':
            return 60;
        case 's':
            return 1;
        default:
            return 0;
    }
}

}  // namespace

int parse_time(const char* span, int* seconds) {
    *seconds = 0;
    std::int32_t total = 0;
    while (*span != '\0') {
        char* end = nullptr;
        const auto number = static_cast<std::int32_t>(std::strtoll(span, &end, 10));
        if (errno != 0) {  // be it left by earlier code, as the header says
            return -1;
        }
        const std::int32_t unit = unit_seconds(*end);
        if (unit == 0) {
            return -1;
        }
        total = Kiln::wrap_add(total, Kiln::wrap_mul(number, unit));
        span = end + 1;
    }
    if (total < 0) {
        return -1;
    }
    *seconds = total;
    return 0;
}

ScaleError parse_scale(const char* text, float* scale) {
    char* end = nullptr;
    *scale = std::strtof(text, &end);
    if (*end != '\0') {
        return ScaleError::not_a_number;
    }
    return 0 >= *scale ? ScaleError::not_positive : ScaleError::none;
}
