// Moments as texts: "2026-01-31T23:59:59Z".
#pragma once

#include <cstdint>
#include <optional>
#include <string>

std::string utc_text(std::int64_t seconds_since_epoch);

// "2026-03-12 14:05"
std::string minute_text(std::int64_t ms_since_epoch);

// The seconds since the epoch, or nothing where the text is not exactly what utc_text() writes.
std::optional<std::int64_t> parse_utc(const std::string& text);
