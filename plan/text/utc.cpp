#include "plan/text/utc.h"

#include <algorithm>
#include <ctime>

namespace {

constexpr const char* format = "%Y-%m-%dT%H:%M:%SZ";

}  // namespace

std::string utc_text(std::int64_t seconds_since_epoch) {
    const std::time_t seconds = seconds_since_epoch;
    std::tm parts = {};
    char text[64] = "";
    if (gmtime_r(&seconds, &parts) != nullptr) {
        std::strftime(text, sizeof(text), format, &parts);
    }
    return text;
}

std::string minute_text(std::int64_t ms_since_epoch) {
    std::string text = utc_text(ms_since_epoch / 1000).substr(0, 16);
    std::replace(text.begin(), text.end(), 'T', ' ');
    return text;
}

std::optional<std::int64_t> parse_utc(const std::string& text) {
    std::tm parts = {};
    const char* end = strptime(text.c_str(), format, &parts);
    const std::int64_t seconds = timegm(&parts);
    // strptime() takes "2026-3-1" and the 30th of February as well.
    return end != nullptr && utc_text(seconds) == text ? std::optional(seconds) : std::nullopt;
}
