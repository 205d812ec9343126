// Texts with any bytes as JSON values, and the checked reading of JSON objects.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

// What a JSON value should have been; thrown by the readers below.
struct JsonDamage : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A string where the text is UTF-8; otherwise {"hex": "..."} with two digits for every byte.
nlohmann::ordered_json text_to_json(const std::string& text);
std::string text_from_json(const nlohmann::json& value);

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

// The member of an object.
const nlohmann::json& member(const nlohmann::json& object, const char* name);
const nlohmann::json& array_member(const nlohmann::json& object, const char* name);
std::string text_member(const nlohmann::json& object, const char* name);
bool flag_member(const nlohmann::json& object, const char* name);
std::int64_t number_member(const nlohmann::json& object, const char* name, std::int64_t least,
                           std::int64_t most);
std::int32_t count_member(const nlohmann::json& object, const char* name);  // any 32-bit number
