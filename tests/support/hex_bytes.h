// Bytes from hexadecimal text.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

inline std::vector<std::uint8_t> hexBytes(const std::string& digits) {
    std::vector<std::uint8_t> bytes;
    for (std::size_t at = 0; at + 1 < digits.size(); at += 2) {
        bytes.push_back(static_cast<std::uint8_t>(std::stoi(digits.substr(at, 2), nullptr, 16)));
    }
    return bytes;
}
