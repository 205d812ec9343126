#include "plan/recording/json_text.h"

#include <cstdlib>

namespace {

using nlohmann::json;
using nlohmann::ordered_json;

constexpr const char* hex_digits = "0123456789abcdef";
constexpr const char* hex_member = "hex";

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

std::string from_hex(const std::string& hex) {
    if (hex.size() % 2 != 0) {
        throw JsonDamage("a text in hex has half a byte");
    }
    std::string text;
    for (std::size_t i = 0; i < hex.size(); i += 2) {
        text += static_cast<char>(std::strtoul(hex.substr(i, 2).c_str(), nullptr, 16));
    }
    if (to_hex(text) != hex) {  // small letters only, as they are written: one text has one form
        throw JsonDamage("a text in hex has something else than digits");
    }
    return text;
}

}  // namespace

ordered_json text_to_json(const std::string& text) {
    try {
        ordered_json value = text;
        static_cast<void>(value.dump());  // refuses what is no UTF-8, and nothing else
        return value;
    } catch (const json::type_error&) {
        return {{hex_member, to_hex(text)}};
    }
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
