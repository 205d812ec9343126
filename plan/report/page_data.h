// The page's data as script elements that no text in it can leave.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

// Appends the JSON as it is, readable for a script at once.
void append_data(const std::string& id, const nlohmann::ordered_json& json, std::string& page);

// Appends it compressed and in base64, of the type "application/zlib"; as it is where this program
// was built without zlib.
void append_packed_data(const std::string& id, const nlohmann::ordered_json& json,
                        std::string& page);
