// What command lines hold: time spans and factors.
#pragma once

// Reads a span such as "1d2h3m4s": terms in any order, each a number and a unit letter. Stores the
// seconds and returns 0, or stores 0 and returns -1 for a bad span. Sums wrap at 32 bits; only the
// sign of the total is checked. errno is not cleared first: a value left there fails the span.
int parse_time(const char* span, int* seconds);

enum class ScaleError { none, not_a_number, not_positive };

// Reads a factor; it is stored before it is judged, and a NaN passes.
ScaleError parse_scale(const char* text, float* scale);
