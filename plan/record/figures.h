// Numbers of the kernel that may be missing, and sums of them: whatever is not known, negative or
// too large makes the result unknown.
#pragma once

#include <cstdint>
#include <optional>

using Figure = std::optional<std::int64_t>;

inline Figure plus(Figure a, Figure b) {
    std::int64_t sum = 0;
    return a && b && !__builtin_add_overflow(*a, *b, &sum) ? Figure(sum) : Figure();
}

// What is left of an amount; nothing when more than all of it would be taken.
inline Figure minus(Figure a, Figure b) {
    return a && b && *a >= *b ? Figure(*a - *b) : Figure();
}

inline Figure times(Figure a, std::int64_t factor) {
    std::int64_t product = 0;
    return a && !__builtin_mul_overflow(*a, factor, &product) ? Figure(product) : Figure();
}
