// Formats values of calls as text: numbers in decimal, bytes as their count and hexadecimal digits.
#pragma once

#include <string>

template <typename Number>
std::string shownValue(Number number) {
    return std::to_string(number);
}

inline std::string shownBytes(const void* bytes, std::size_t length) {
    static const char* const kDigits = "0123456789ABCDEF";
    std::string text = std::to_string(length) + ":";
    for (std::size_t index = 0; index < length; ++index) {
        const unsigned char byte = static_cast<const unsigned char*>(bytes)[index];
        text += kDigits[byte >> 4U];
        text += kDigits[byte & 0x0FU];
    }
    return text;
}

inline std::string shownValue(const std::string& text) {
    return shownBytes(text.data(), text.size());
}

/// "operation(value, value)"
template <typename... Values>
std::string shownCall(const char* operation, const Values&... values) {
    std::string text = operation;
    text += "(";
    [[maybe_unused]] const char* separator = "";
    ((text += separator, text += shownValue(values), separator = ", "), ...);
    return text + ")";
}
