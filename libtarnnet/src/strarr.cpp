#include "strarr.h"

#include <stddef.h>
#include <stdlib.h>
#include <string.h>

namespace tarnnet {

namespace {

size_t count_of(char* const* array) {
    size_t count = 0;
    while (array != nullptr && array[count] != nullptr) {
        ++count;
    }
    return count;
}

}  // namespace

int add_to_strarr(char*** array, const char* text) {
    const size_t count = count_of(*array);
    char* copy = strdup(text);
    if (copy == nullptr) {
        return -1;
    }
    auto* grown = static_cast<char**>(realloc(*array, (count + 2) * sizeof(char*)));
    if (grown == nullptr) {
        free(copy);
        return -1;
    }
    grown[count] = copy;
    grown[count + 1] = nullptr;
    *array = grown;
    return 0;
}

char** dup_strarr(char* const* array) {
    if (array == nullptr) {
        return nullptr;
    }
    const size_t count = count_of(array);
    auto* copy = static_cast<char**>(calloc(count + 1, sizeof(char*)));
    if (copy == nullptr) {
        return nullptr;
    }
    for (size_t i = 0; i < count; ++i) {
        copy[i] = strdup(array[i]);
        if (copy[i] == nullptr) {
            free_strarr(copy);
            return nullptr;
        }
    }
    return copy;
}

void free_strarr(char** array) {
    if (array == nullptr) {
        return;
    }
    for (char** text = array; *text != nullptr; ++text) {
        free(*text);
    }
    free(array);
}

}  // namespace tarnnet
