// Null-terminated arrays of heap strings, as the interface records hold them. A null array is an
// empty one. The array owns its strings.
#pragma once

namespace tarnnet {

// Appends a copy of `text`, growing the array by exactly one slot. 0, or -1 without memory: the
// array is then unchanged.
int add_to_strarr(char*** array, const char* text);

// A copy of array and strings for the caller to free; null for a null array and without memory.
char** dup_strarr(char* const* array);

// Frees strings and array; null is allowed.
void free_strarr(char** array);

}  // namespace tarnnet
