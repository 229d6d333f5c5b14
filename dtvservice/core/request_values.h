// Reads the values of an operator's request.
// Threads: any.
// Blocks:  never.
// Fails:   throws std::invalid_argument with the name of the value.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

namespace dtvservice {

template <typename Value>
Value get(const nlohmann::json& request, const char* name) {
    if (!request.contains(name)) {
        throw std::invalid_argument(std::string(name) + " is missing");
    }
    try {
        return request.at(name).get<Value>();
    } catch (const nlohmann::json::exception&) {
        throw std::invalid_argument(std::string(name) + " is of the wrong kind");
    }
}

template <typename Number>
Number getNumber(const nlohmann::json& request, const char* name) {
    // The conversion of a number with a fraction or an exponent is undefined if it has more than 64 bits.
    if (request.contains(name) && request.at(name).is_number_float()) {
        throw std::invalid_argument(std::string(name) + " is out of range");
    }
    const auto value = get<std::int64_t>(request, name);
    const auto number = static_cast<Number>(value);
    // An unsigned number above the int64_t range arrives here as a negative int64_t, but is not negative.
    const bool isNegative = value < 0 && !request.at(name).is_number_unsigned();
    if (!request.at(name).is_number_integer() || static_cast<std::int64_t>(number) != value ||
        isNegative != (number < 0)) {
        throw std::invalid_argument(std::string(name) + " is out of range");
    }
    return number;
}

}  // namespace dtvservice
