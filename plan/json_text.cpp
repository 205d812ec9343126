#include "plan/json_text.h"

#include <limits>

namespace {

using nlohmann::json;
using nlohmann::ordered_json;

constexpr const char* hex_digits = "0123456789abcdef";
constexpr const char* hex_member = "hex";

bool is_utf8(const std::string& text) {
    try {
        static_cast<void>(ordered_json(text).dump());
        return true;
    } catch (const json::type_error&) {
        return false;
    }
}

std::string to_hex(const std::string& text) {
    std::string hex;
    hex.reserve(2 * text.size());
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        hex += hex_digits[byte / 16];
        hex += hex_digits[byte % 16];
    }
    return hex;
}

unsigned hex_value(char digit) {
    const std::size_t value = std::string(hex_digits).find(digit);
    if (value == std::string::npos) {
        throw JsonDamage("a text in hex has something else than digits");
    }
    return static_cast<unsigned>(value);
}

std::string from_hex(const std::string& hex) {
    if (hex.size() % 2 != 0) {
        throw JsonDamage("a text in hex has half a byte");
    }
    std::string text;
    for (std::size_t i = 0; i < hex.size(); i += 2) {
        text += static_cast<char>(hex_value(hex[i]) * 16 + hex_value(hex[i + 1]));
    }
    return text;
}

[[noreturn]] void refuse(const char* name, const char* wanted) {
    throw JsonDamage("\"" + std::string(name) + "\" is not " + wanted);
}

}  // namespace

ordered_json text_to_json(const std::string& text) {
    if (is_utf8(text)) {
        return text;
    }
    return {{hex_member, to_hex(text)}};
}

ordered_json texts_to_json(const std::vector<std::string>& texts) {
    return list_to_json(texts, text_to_json);
}

std::string text_from_json(const json& value) {
    if (value.is_string()) {
        return value.get<std::string>();
    }
    if (value.is_object() && value.contains(hex_member) && value.at(hex_member).is_string()) {
        return from_hex(value.at(hex_member).get<std::string>());
    }
    throw JsonDamage("a text is missing");
}

const json& member(const json& object, const char* name) {
    const auto found = object.find(name);
    if (found == object.end()) {
        throw JsonDamage("\"" + std::string(name) + "\" is missing");
    }
    return *found;
}

const json& array_member(const json& object, const char* name) {
    const json& value = member(object, name);
    if (!value.is_array()) {
        refuse(name, "a list");
    }
    return value;
}

std::string text_member(const json& object, const char* name) {
    const json& value = member(object, name);
    if (!value.is_string() && !value.is_object()) {
        refuse(name, "a text");
    }
    return text_from_json(value);
}

bool flag_member(const json& object, const char* name) {
    const json& value = member(object, name);
    if (!value.is_boolean()) {
        refuse(name, "true or false");
    }
    return value.get<bool>();
}

std::int64_t number_member(const json& object, const char* name, std::int64_t least,
                           std::int64_t most) {
    const json& value = member(object, name);
    // An unsigned number above the signed ones would come back negative.
    const bool fits = value.is_number_integer() &&
                      (!value.is_number_unsigned() ||
                       value.get<std::uint64_t>() <=
                           static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()));
    const std::int64_t number = fits ? value.get<std::int64_t>() : 0;
    if (!fits || number < least || number > most) {
        refuse(name, "a whole number that it can be");
    }
    return number;
}

std::int32_t count_member(const json& object, const char* name) {
    using Limits = std::numeric_limits<std::int32_t>;
    return static_cast<std::int32_t>(number_member(object, name, Limits::min(), Limits::max()));
}
