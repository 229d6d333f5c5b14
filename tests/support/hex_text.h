// Converts bytes to hexadecimal text in groups of eight digits, to compare them and to show differences.
#pragma once

#include <cctype>
#include <cstdint>
#include <string>
#include <vector>

/// Normalises the spacing of digits so that they can be compared.
inline std::string hexText(const std::string& digits) {
    std::string text;
    int count = 0;
    for (const char digit : digits) {
        if (std::isxdigit(static_cast<unsigned char>(digit)) != 0) {
            text += (count != 0 && count % 8 == 0) ? " " : "";
            text += digit;
            ++count;
        }
    }
    return text;
}

inline std::string hexText(const std::vector<std::uint8_t>& bytes) {
    static const char* const kDigits = "0123456789ABCDEF";
    std::string digits;
    for (const std::uint8_t byte : bytes) {
        digits += kDigits[byte >> 4U];
        digits += kDigits[byte & 0x0FU];
    }
    return hexText(digits);
}
