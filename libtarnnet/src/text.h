// Small text helpers of the configuration readers.
#pragma once

#include <stddef.h>
#include <stdio.h>

// Copies `text` into `field` of `size` bytes, cut to size - 1 characters, and ends it with a NUL.
void copy_cut(char* field, size_t size, const char* text);

// Whether `text` starts with `prefix`.
bool has_prefix(const char* text, const char* prefix);

// The white space of the C locale, whatever locale the host program runs in.
bool is_space(char c);

// Opens a file for reading: close-on-exec, and never waiting for the writer of a pipe. Null with
// errno set on failure. A directory opens and then reads as an empty file.
FILE* open_text_file(const char* path);
