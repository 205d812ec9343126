// Texts with any bytes as JSON values.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

// A JSON value is not what it should be; the text says how.
struct JsonDamage : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A string where the text is UTF-8; otherwise {"hex": "..."} with two digits for every byte.
nlohmann::ordered_json text_to_json(const std::string& text);
std::string text_from_json(const nlohmann::json& value);

// null for nothing.
template <class Value>
nlohmann::ordered_json optional_json(const std::optional<Value>& value) {
    return value ? nlohmann::ordered_json(*value) : nlohmann::ordered_json();
}

// A list of what `make` gives for each of the items.
template <class Items, class Make>
auto list_to_json(const Items& items, Make make) {
    auto list = decltype(make(*items.begin()))::array();
    for (const auto& item : items) {
        list.push_back(make(item));
    }
    return list;
}

nlohmann::ordered_json texts_to_json(const std::vector<std::string>& texts);
