// Values as texts.
#include <array>
#include <cinttypes>
#include <cstdio>

#include "message_fields.h"

namespace message_fields {

namespace {

/// Negative numbers in two's complement.
std::uint64_t bitsOf(const Value& value) {
    if (const auto* const number = std::get_if<std::int64_t>(&value)) {
        return static_cast<std::uint64_t>(*number);
    }
    const auto* const number = std::get_if<std::uint64_t>(&value);
    return number == nullptr ? 0 : *number;
}

std::string decimal(const Value& value) {
    const auto* const number = std::get_if<std::int64_t>(&value);
    return number != nullptr ? std::to_string(*number) : std::to_string(bitsOf(value));
}

/// "eng" from 0x656E67; the number if a byte is no letter.
std::string languageText(std::uint64_t code) {
    if (code == 0) {
        return "";
    }
    std::string letters;
    for (const unsigned int shift : {16U, 8U, 0U}) {
        letters += static_cast<char>(code >> shift & 0xFFU);
    }
    for (const char letter : letters) {
        if (letter < 'A' || letter > 'z' || (letter > 'Z' && letter < 'a')) {
            return hexadecimalNumber(code, 6);
        }
    }
    return letters;
}

std::string joined(const std::vector<std::string>& names) {
    std::string all;
    for (const std::string& name : names) {
        all += (all.empty() ? "" : "+") + name;
    }
    return all.empty() ? "none" : all;
}

const char* nameOf(const Form& form, const Value& value) {
    for (const NamedValue& named : form.names) {
        if (static_cast<std::uint64_t>(named.value) == bitsOf(value)) {
            return named.name;
        }
    }
    return nullptr;
}

std::string numberText(const Form& form, const Value& value) {
    const auto* const number = std::get_if<std::int64_t>(&value);
    const bool negative = number != nullptr && *number < 0;
    switch (form.notation) {
        case Notation::hexadecimal:
            return negative ? decimal(value) : hexadecimalNumber(bitsOf(value), form.digits);
        case Notation::both:
            return decimal(value) + " (" + hexadecimalNumber(bitsOf(value), 1) + ")";
        case Notation::flag:
            return bitsOf(value) == 0 ? "no" : "yes";
        case Notation::flags:
            return joined(flagNames(form, value));
        case Notation::language:
            return languageText(bitsOf(value));
        default:
            return decimal(value);
    }
}

}  // namespace

std::string hexadecimalNumber(std::uint64_t number, int digits) {
    std::array<char, 24> shown{};
    std::snprintf(shown.data(), shown.size(), "0x%0*" PRIX64, digits, number);
    return shown.data();
}

std::string namedText(const char* name, std::uint64_t number) {
    return text(FieldValue{findField(name), number});
}

std::vector<std::string> flagNames(const Form& form, const Value& value) {
    std::vector<std::string> names;
    std::uint64_t left = bitsOf(value);
    for (const NamedValue& named : form.names) {
        const auto bit = static_cast<std::uint64_t>(named.value);
        if ((left & bit) != 0) {
            names.emplace_back(named.name);
            left &= ~bit;
        }
    }
    if (left != 0) {
        names.push_back(std::to_string(left));
    }
    return names;
}

std::string hexadecimal(std::string_view bytes) {
    static const char* const kDigits = "0123456789ABCDEF";
    std::string digits;
    for (const char character : bytes) {
        digits += kDigits[static_cast<unsigned char>(character) >> 4U];
        digits += kDigits[static_cast<unsigned char>(character) & 0x0FU];
    }
    return digits;
}

std::string valueText(const Form& form, const Value& value) {
    if (const auto* const own = std::get_if<std::string>(&value)) {
        const bool isBytes = form.notation == Notation::bytes || form.notation == Notation::section;
        return isBytes ? hexadecimal(*own) : *own;
    }
    const char* const name = form.notation == Notation::flags ? nullptr : nameOf(form, value);
    return name != nullptr ? name : numberText(form, value);
}

std::string text(const FieldValue& value) {
    const Form& form = *value.field->form;
    const std::string shown = valueText(form, value.value);
    const std::string unit = form.unit;
    return std::string(value.field->name) + " " + (shown.empty() ? "-" : shown) +
           (unit.empty() ? "" : " (" + unit + ")");
}

std::string text(const std::vector<FieldValue>& values) {
    constexpr std::size_t kParts = 3;
    std::string line;
    for (std::size_t index = 0; index < values.size(); ++index) {
        line += line.empty() ? "" : ", ";
        const bool isTriplet = index + kParts <= values.size() &&
                               values[index].field->name == std::string_view("onid") &&
                               values[index + 2].field->name == std::string_view("sid");
        if (!isTriplet) {
            line += text(values[index]);
            continue;
        }
        line += "service " + decimal(values[index].value) + ":" + decimal(values[index + 1].value) + ":" +
                decimal(values[index + 2].value);
        index += kParts - 1;
    }
    return line;
}

}  // namespace message_fields
