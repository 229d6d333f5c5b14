// Escapes bytes that a terminal must not get.
#include "si/printable.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace si {

namespace {

std::string escaped(const std::string& text, std::size_t at, std::size_t count) {
    std::string result;
    for (const char byte : text.substr(at, count)) {
        char digits[8];
        std::snprintf(digits, sizeof digits, "\\x%02x", static_cast<unsigned char>(byte));
        result += digits;
    }
    return result;
}

std::uint32_t byteAt(const std::string& text, std::size_t at) {
    return at < text.size() ? static_cast<unsigned char>(text[at]) : 0U;
}

/// Returns the number of bytes of the character at a position, and its code. 0 if it is not UTF-8 (RFC 3629).
std::size_t decode(const std::string& text, std::size_t at, std::uint32_t& code) {
    const std::uint32_t first = byteAt(text, at);
    const std::size_t size = first < 0x80        ? 1
                             : first >> 5U == 6  ? 2
                             : first >> 4U == 14 ? 3
                             : first >> 3U == 30 ? 4
                                                 : 0;
    constexpr std::uint32_t kMask[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
    constexpr std::uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    code = first & kMask[size];
    for (std::size_t next = 1; next < size; ++next) {
        if ((byteAt(text, at + next) & 0xC0U) != 0x80) {
            return 0;
        }
        code = code << 6U | (byteAt(text, at + next) & 0x3FU);
    }
    const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
    return code < kLeast[size] || code > 0x10FFFF || isSurrogate ? 0 : size;
}

bool isControl(std::uint32_t code) {
    const bool isDirection = (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
    return code < 0x20 || (code >= 0x7F && code < 0xA0) || isDirection;
}

}  // namespace

std::string printable(const std::string& text) {
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        std::uint32_t code = 0;
        const std::size_t size = decode(text, at, code);
        if (size == 0 || isControl(code)) {
            result += escaped(text, at, std::max<std::size_t>(size, 1));
        } else {
            result += text.substr(at, size);
        }
        at += std::max<std::size_t>(size, 1);
    }
    return result;
}

}  // namespace si
