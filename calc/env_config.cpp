#include "calc/env_config.h"

#include <cinttypes>
#include <cstdio>

namespace {

// Room for the text of one numeric value, with "=" and quotes.
constexpr std::size_t value_text_size = 128;

}  // namespace

void EnvConfig::add_2ul_param(const char* name, std::uint64_t barrier, std::uint64_t limit) {
    char value[value_text_size];
    std::snprintf(value, sizeof(value), "=\"%" PRIu64 ":%" PRIu64 "\"", barrier, limit);
    text_.append(name).append(value).append("\n");
}

void EnvConfig::add_ul_param(const char* name, std::uint64_t value) {
    char text[value_text_size];
    std::snprintf(text, sizeof(text), "=\"%" PRIu64 "\"", value);
    text_.append(name).append(text).append("\n");
}

void EnvConfig::add_param(const char* name, const char* value) {
    if (value == nullptr || *value == '\0') {
        return;
    }
    text_.append(name).append("=\"").append(value).append("\"\n");
}
