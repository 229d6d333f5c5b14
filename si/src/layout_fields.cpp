// Reads fields by the types of layouts.
#include "layout_fields.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "cursor.h"
#include "notation.h"
#include "si/text.h"
#include "times.h"

namespace si {

namespace {

std::string timeText(Bytes field) {
    const std::optional<UtcSeconds> time = startTime(field.data);
    return time ? dateText(*time) + "T" + clockText(*time) + "Z" : "undefined";
}

/// Hours, minutes and perhaps seconds in BCD.
std::string clockPairs(Bytes field) {
    std::string text;
    for (std::size_t at = 0; at < field.size; ++at) {
        const std::string two = std::to_string(fromBcd(field.data[at]));
        text += std::string(at == 0 ? "" : ":") + (two.size() < 2 ? "0" : "") + two;
    }
    return text;
}

std::string durationText(Bytes field) {
    const bool undefined =
        std::all_of(field.data, field.data + field.size, [](std::uint8_t byte) { return byte == 0xFF; });
    return undefined ? "undefined" : clockPairs(field);
}

std::string dottedText(Bytes field) {
    std::string text;
    for (std::size_t at = 0; at < field.size; ++at) {
        text += (at == 0 ? "" : ".") + std::to_string(field.data[at]);
    }
    return text;
}

/// Tenths of degrees in BCD.
std::string degreesText(Bytes field) {
    return std::to_string(fromBcd(field.data[0]) * 10 + (field.data[1] >> 4U)) + "." +
           std::to_string(field.data[1] & 0x0FU);
}

/// A text of `size` bytes.
struct SizedText {
    const char* type;
    std::size_t size;
    std::string (*text)(Bytes);
};

constexpr SizedText kSizedTexts[] = {
    {"lang", 3, plainText},         // a language or country
    {"utc", 5, timeText},           // MJD and UTC
    {"duration", 3, durationText},  // hours, minutes, seconds
    {"hhmm", 2, clockPairs},        // hours, minutes
    {"degrees", 2, degreesText},    // an orbital position
    {"ipv4", 4, dottedText},
};

void addText(const Element& element, FieldInput& input, Node& node, Bytes bytes, std::string (*text)(Bytes)) {
    if (input.good()) {
        node.text(std::string(element.name), text(bytes));
    }
}

void addBytes(const Element& element, Node& node, Bytes bytes) {
    if (bytes.size != 0) {
        node.bytes(std::string(element.name), bytes);
    }
}

void addNumber(const Element& element, FieldInput& input, Node& node, std::uint64_t value, unsigned int bits) {
    if (!input.good()) {
        return;
    }
    input.values.emplace_back(element.name, value);
    if (!element.isHidden) {
        node.fields.push_back(numberField(std::string(element.name), value, bits));
    }
}

constexpr unsigned int kBitsOfDigit = 4;

/// A number of BCD digits; none if a digit is above 9.
std::optional<std::uint64_t> decimalDigits(const Element& element, FieldInput& input, unsigned int count) {
    const std::size_t start = input.place();
    std::uint64_t value = 0;
    bool isDecimal = true;
    for (unsigned int digit = 0; digit < count; ++digit) {
        const std::uint64_t next = input.number(element.name, kBitsOfDigit);
        isDecimal = isDecimal && next <= 9;
        value = value * 10 + next;
    }
    if (!isDecimal) {
        input.complain(element.name, " has a digit above 9", start);
        return std::nullopt;
    }
    return value;
}

/// "12", "32x10", "bcd8x100"
void readNumber(const Element& element, FieldInput& input, Node& node) {
    constexpr std::string_view kDecimal = "bcd";
    const bool isDecimal = element.type.substr(0, kDecimal.size()) == kDecimal;
    const std::string_view count = element.type.substr(isDecimal ? kDecimal.size() : 0);
    const std::size_t sign = std::min(count.find('x'), count.size());
    const auto size = static_cast<unsigned int>(numberIn(count.substr(0, sign)));
    const std::uint64_t factor = sign == count.size() ? 1 : numberIn(count.substr(sign + 1));
    if (size == 0) {
        input.fail(element.name, " has no known type", input.place());
    } else if (!isDecimal) {
        addNumber(element, input, node, input.number(element.name, size) * factor, size);
    } else if (const auto value = decimalDigits(element, input, size)) {
        addNumber(element, input, node, *value * factor, size * kBitsOfDigit);
    }
}

/// roll_off is present if the bit after it, modulation_system, is 1.
void readRollOff(const Element& element, FieldInput& input, Node& node) {
    constexpr unsigned int kBits = 2;
    const bool isPresent = input.ahead(kBits);
    const std::uint64_t value = input.number(element.name, kBits);
    if (isPresent) {
        addNumber(element, input, node, value, kBits);
    }
}

/// A text or bytes with a length byte before them, or up to the end.
struct Type {
    const char* name;
    void (*read)(const Element&, FieldInput&, Node&);
};

Bytes afterLength(const Element& element, FieldInput& input) {
    constexpr std::size_t kLengthBits = 8;
    return input.sized(element.name, kLengthBits, "_length");
}

constexpr Type kTypes[] = {
    // A text of EN 300 468, Annex A, after its length.
    {"text", [](const Element& element, FieldInput& input,
                Node& node) { addText(element, input, node, afterLength(element, input), toUtf8); }},
    // Characters, such as a URL, after their length.
    {"string", [](const Element& element, FieldInput& input,
                  Node& node) { addText(element, input, node, afterLength(element, input), plainText); }},
    // Bytes after their length.
    {"bytes", [](const Element& element, FieldInput& input,
                 Node& node) { addBytes(element, node, afterLength(element, input)); }},
    // The same, up to the end.
    {"restText", [](const Element& element, FieldInput& input,
                    Node& node) { addText(element, input, node, input.rest(), toUtf8); }},
    {"restString", [](const Element& element, FieldInput& input,
                      Node& node) { addText(element, input, node, input.rest(), plainText); }},
    {"rest", [](const Element& element, FieldInput& input, Node& node) { addBytes(element, node, input.rest()); }},
    // Only the number of bytes up to the end.
    {"size",
     [](const Element& element, FieldInput& input, Node& node) {
         const std::size_t size = input.rest().size;
         addNumber(element, input, node, size, 0);
     }},
    {"rollOff", readRollOff},
};

/// "bytes6" has 6 bytes; "bytes@field" and "chars@field" have the length of an earlier field.
bool readCounted(const Element& element, FieldInput& input, Node& node) {
    constexpr std::string_view kFixed = "bytes";
    const std::size_t at = element.type.find('@');
    if (at != std::string_view::npos) {
        const Bytes taken =
            input.take(element.name, static_cast<std::size_t>(input.value(element.type.substr(at + 1))));
        if (element.type[0] == 'c') {
            addText(element, input, node, taken, plainText);
        } else {
            addBytes(element, node, taken);
        }
        return true;
    }
    if (element.type.size() > kFixed.size() && element.type.substr(0, kFixed.size()) == kFixed) {
        addBytes(element, node, input.take(element.name, numberIn(element.type.substr(kFixed.size()))));
        return true;
    }
    return false;
}

}  // namespace

std::size_t numberIn(std::string_view digits) {
    const bool isHexadecimal = digits.substr(0, 2) == "0x";
    digits.remove_prefix(isHexadecimal ? 2 : 0);
    std::size_t number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number, isHexadecimal ? 16 : 10);
    return number;
}

void readField(const Element& element, FieldInput& input, Node& node) {
    for (const SizedText& known : kSizedTexts) {
        if (element.type == known.type) {
            addText(element, input, node, input.take(element.name, known.size), known.text);
            return;
        }
    }
    for (const Type& known : kTypes) {
        if (element.type == known.name) {
            known.read(element, input, node);
            return;
        }
    }
    if (readCounted(element, input, node)) {
        return;
    }
    if (element.name == "-") {
        input.skip(numberIn(element.type));
    } else {
        readNumber(element, input, node);
    }
}

}  // namespace si
