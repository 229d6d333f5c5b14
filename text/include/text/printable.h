// Makes text safe to show: text from a broadcaster or a peer must not control the terminal.
// Threads: any.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

namespace text {

/// A character of UTF-8 (RFC 3629).
struct Character {
    std::size_t size = 0;  ///< bytes; 0 if the bytes are not UTF-8
    std::uint32_t code = 0;
};

inline Character characterAt(std::string_view text, std::size_t at) {
    constexpr std::uint32_t kMask[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
    constexpr std::uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    const auto byteAt = [text](std::size_t index) {
        return index < text.size() ? static_cast<unsigned char>(text[index]) : std::uint32_t{0};
    };
    const std::uint32_t first = byteAt(at);
    const std::size_t size = first < 0x80        ? 1
                             : first >> 5U == 6  ? 2
                             : first >> 4U == 14 ? 3
                             : first >> 3U == 30 ? 4
                                                 : 0;
    std::uint32_t code = first & kMask[size];
    for (std::size_t next = 1; next < size; ++next) {
        if ((byteAt(at + next) & 0xC0U) != 0x80) {
            return {};
        }
        code = code << 6U | (byteAt(at + next) & 0x3FU);
    }
    const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
    return size == 0 || code < kLeast[size] || code > 0x10FFFF || isSurrogate ? Character{} : Character{size, code};
}

/// Whether a terminal may do something else with the character than show it: control characters, line and paragraph
/// separators, and marks that change the writing direction.
inline bool controlsTerminal(std::uint32_t code) {
    const bool isControl = code < 0x20 || (code >= 0x7F && code < 0xA0);
    const bool isDirection = code == 0x061C || code == 0x200E || code == 0x200F || (code >= 0x202A && code <= 0x202E) ||
                             (code >= 0x2066 && code <= 0x2069);
    return isControl || isDirection || code == 0x2028 || code == 0x2029;
}

/// Passes each character that is safe to show to `keep`, and others, also bytes that are not UTF-8, to `escape`. Both
/// get the bytes; `escape` also gets the character, whose size is 0 if there is none.
template <typename Keep, typename Escape>
void eachCharacter(std::string_view text, Keep keep, Escape escape) {
    for (std::size_t at = 0; at < text.size();) {
        const Character character = characterAt(text, at);
        const std::string_view bytes = text.substr(at, std::max<std::size_t>(character.size, 1));
        if (character.size != 0 && !controlsTerminal(character.code)) {
            keep(bytes);
        } else {
            escape(bytes, character);
        }
        at += bytes.size();
    }
}

inline bool isPlainAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char byte) { return byte >= ' ' && byte <= '~'; });
}

/// The text as UTF-8. Shows characters that control a terminal, and bytes that are not UTF-8, as \xNN.
inline std::string printable(std::string_view text) {
    if (isPlainAscii(text)) {
        return std::string(text);
    }
    std::string shown;
    shown.reserve(text.size());
    eachCharacter(
        text, [&shown](std::string_view bytes) { shown += bytes; },
        [&shown](std::string_view bytes, Character) {
            for (const char byte : bytes) {
                char digits[8];
                std::snprintf(digits, sizeof digits, "\\x%02x",
                              static_cast<unsigned int>(static_cast<unsigned char>(byte)));
                shown += digits;
            }
        });
    return shown;
}

/// The same for a JSON document in one line, whose strings then have \uNNNN. It must be UTF-8.
inline std::string printableJson(std::string_view document) {
    std::string shown;
    shown.reserve(document.size());
    eachCharacter(
        document, [&shown](std::string_view bytes) { shown += bytes; },
        [&shown](std::string_view, Character character) {
            char digits[8];
            std::snprintf(digits, sizeof digits, "\\u%04x", static_cast<unsigned int>(character.code & 0xFFFFU));
            shown += digits;
        });
    return shown;
}

}  // namespace text
