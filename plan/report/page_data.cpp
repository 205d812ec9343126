#include "plan/report/page_data.h"

#include <cstdint>
#include <new>
#include <nlohmann/json.hpp>

#ifdef TARN_ZLIB
#include <zlib.h>
#endif

namespace {

using nlohmann::ordered_json;

// Everything beyond ASCII is written as an escape, and bytes that are no UTF-8 are replaced.
std::string text_of(const ordered_json& json) {
    return json.dump(-1, ' ', true, ordered_json::error_handler_t::replace);
}

void append_element(const std::string& id, const char* type, const std::string& content,
                    std::string& page) {
    page +=
        std::string("<script type=\"") + type + "\" id=\"" + id + "\">" + content + "</script>\n";
}

#ifdef TARN_ZLIB

std::string deflated(const std::string& text) {
    uLongf size = compressBound(static_cast<uLong>(text.size()));
    std::string packed(size, '\0');
    // Only a lack of memory can fail, and of that the string above has made sure.
    if (compress2(reinterpret_cast<Bytef*>(&packed[0]), &size,
                  reinterpret_cast<const Bytef*>(text.data()), static_cast<uLong>(text.size()),
                  Z_BEST_COMPRESSION) != Z_OK) {
        throw std::bad_alloc();
    }
    packed.resize(size);
    return packed;
}

std::string base64(const std::string& bytes) {
    constexpr const char* alphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        std::uint32_t three = 0;
        for (std::size_t j = i; j < i + 3; ++j) {
            three = three << 8 | (j < bytes.size() ? static_cast<unsigned char>(bytes[j]) : 0U);
        }
        for (unsigned shift = 24; shift > 0;) {
            shift -= 6;
            text += alphabet[three >> shift & 63U];
        }
    }
    for (std::size_t i = bytes.size(); i % 3 != 0; ++i) {
        text[text.size() - (3 - i % 3)] = '=';
    }
    return text;
}

#endif

}  // namespace

void append_data(const std::string& id, const ordered_json& json, std::string& page) {
    std::string content;
    for (const char c : text_of(json)) {
        if (c == '<') {  // only strings can hold one, and there it may be written as an escape
            content += "\\u003c";
        } else {
            content += c;
        }
    }
    append_element(id, "application/json", content, page);
}

void append_packed_data(const std::string& id, const ordered_json& json, std::string& page) {
#ifdef TARN_ZLIB
    append_element(id, "application/zlib", base64(deflated(text_of(json))), page);
#else
    append_data(id, json, page);
#endif
}
