// Escapes what the JSON library leaves as it is.
#include "safe_json.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>

namespace dtvctl {

using nlohmann::json;

namespace {

struct Escaped {
    std::size_t size = 0;  // bytes of the character; 0 if it stays
    unsigned int code = 0;
};

/// Seconds since the epoch, to the millisecond.
double epochSeconds() {
    constexpr double kMilliseconds = 1000;
    const std::chrono::duration<double> now = std::chrono::system_clock::now().time_since_epoch();
    return std::round(now.count() * kMilliseconds) / kMilliseconds;
}

unsigned int byteAt(const std::string& text, std::size_t at) {
    return at < text.size() ? static_cast<unsigned char>(text[at]) : 0U;
}

/// The character at a position of correct UTF-8, if it must be escaped: DEL, U+0080 to U+009F, and the marks of
/// direction U+202A to U+202E and U+2066 to U+2069. The library has escaped those below U+0020.
Escaped escapedAt(const std::string& text, std::size_t at) {
    const unsigned int first = byteAt(text, at);
    const unsigned int second = byteAt(text, at + 1);
    const unsigned int third = byteAt(text, at + 2);
    if (first == 0x7F) {
        return {1, first};
    }
    if (first == 0xC2 && second < 0xA0) {
        return {2, second};
    }
    const unsigned int code = 0x2000U | (second & 0x3FU) << 6U | (third & 0x3FU);
    const bool isDirection = (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
    return first == 0xE2 && isDirection ? Escaped{3, code} : Escaped{};
}

}  // namespace

std::string safeJson(const json& value) {
    const std::string text = value.dump(-1, ' ', false, json::error_handler_t::replace);
    std::string safe;
    for (std::size_t at = 0; at < text.size();) {
        const Escaped escaped = escapedAt(text, at);
        if (escaped.size == 0) {
            safe += text[at++];
            continue;
        }
        char digits[8];
        std::snprintf(digits, sizeof digits, "\\u%04x", escaped.code);
        safe += digits;
        at += escaped.size;
    }
    return safe;
}

void printJson(json object) {
    object["time"] = epochSeconds();
    std::printf("%s\n", safeJson(object).c_str());
}

}  // namespace dtvctl
