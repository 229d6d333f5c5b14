// Follows the lists of types.
#include "message_layout.h"

#include <algorithm>

namespace message_fields {

namespace {

struct Type {
    const char* name;
    std::size_t width;
    bool isSigned;
    bool isCarrier;
};

constexpr std::size_t kLengthWidth = 4;
constexpr std::size_t kCarrierWidth = 8;
constexpr unsigned int kBitsOfAByte = 8;

constexpr Type kTypes[] = {{"U8", 1, false, false},
                           {"U16", 2, false, false},
                           {"I16", 2, true, false},
                           {"U32", 4, false, false},
                           {"I32", 4, true, false},
                           {"U64", 8, false, false},
                           {"String", kCarrierWidth, false, true},
                           {"Blob", kCarrierWidth, false, true},
                           {"ByteVector", kCarrierWidth, false, true}};
/// What is no record and none of the above is an enumeration.
constexpr Type kEnumeration = {"", 4, true, false};

const Type& typeOf(std::string_view name) {
    const Type* const found =
        std::find_if(std::begin(kTypes), std::end(kTypes), [name](const Type& type) { return name == type.name; });
    return found == std::end(kTypes) ? kEnumeration : *found;
}

/// The nested record of a field type, which is called as the record is and ends in "Field"; null for any other type.
const Message* recordOf(std::string_view type) {
    constexpr std::string_view kEnding = "Field";
    if (type.size() <= kEnding.size() || type.substr(type.size() - kEnding.size()) != kEnding) {
        return nullptr;
    }
    const std::string_view name = type.substr(0, type.size() - kEnding.size());
    for (const Message& message : messages()) {
        if (message.kind == Message::Kind::record && std::string_view(message.name).substr(0, name.size()) == name) {
            return &message;
        }
    }
    return nullptr;
}

std::size_t endOf(const std::vector<Place>& layout) {
    return layout.empty() ? 0 : layout.back().offset + layout.back().width;
}

void append(const Message& message, std::vector<Place>& layout) {
    std::string_view rest = message.types;
    for (const Field& field : fieldsOf(message.name)) {
        const std::size_t begin = rest.find('(') + 1;
        const std::string_view name = rest.substr(begin, rest.find(',') - begin);
        rest.remove_prefix(rest.find(')') + 1);
        if (const Message* const nested = recordOf(name)) {
            append(*nested, layout);
        } else {
            const Type& type = typeOf(name);
            layout.push_back({&field, endOf(layout), type.width, type.isSigned, type.isCarrier});
        }
    }
}

std::uint64_t numberAt(std::string_view image, std::size_t offset, std::size_t width) {
    std::uint64_t number = 0;
    for (std::size_t index = 0; index < width; ++index) {
        number = number << kBitsOfAByte | static_cast<unsigned char>(image[offset + index]);
    }
    return number;
}

Value scalarAt(std::string_view image, const Place& place) {
    const std::uint64_t number = numberAt(image, place.offset, place.width);
    if (!place.isSigned) {
        return number;
    }
    const std::uint64_t sign = std::uint64_t{1} << (place.width * kBitsOfAByte - 1);
    return static_cast<std::int64_t>((number ^ sign) - sign);
}

}  // namespace

const Message* findMessage(std::uint32_t identifier) {
    const List<Message> all = messages();
    const Message* const found = std::find_if(all.begin(), all.end(), [identifier](const Message& message) {
        return message.kind != Message::Kind::record && message.identifier == identifier;
    });
    return found == all.end() ? nullptr : found;
}

std::vector<Place> layoutOf(const Message& message) {
    std::vector<Place> layout;
    append(message, layout);
    return layout;
}

std::size_t fixedSizeOf(const std::vector<Place>& layout) {
    return std::max<std::size_t>(endOf(layout), 1);
}

bool readImage(const Message& message, std::string_view image, std::vector<FieldValue>& values, std::string& error) {
    const std::vector<Place> layout = layoutOf(message);
    std::size_t carriedAt = fixedSizeOf(layout);
    if (image.size() < carriedAt) {
        error = "message of " + std::to_string(image.size()) + " bytes, " + std::to_string(carriedAt) + " expected";
        return false;
    }
    for (const Place& place : layout) {
        if (!place.isCarrier) {
            values.push_back({place.field, scalarAt(image, place)});
            continue;
        }
        const std::uint64_t length = numberAt(image, place.offset, kLengthWidth);
        if (length > image.size() - carriedAt) {
            error = std::string(place.field->name) + " at offset " + std::to_string(place.offset) + " names " +
                    std::to_string(length) + " bytes, " + std::to_string(image.size() - carriedAt) + " are left";
            return false;
        }
        values.push_back({place.field, std::string(image.substr(carriedAt, static_cast<std::size_t>(length)))});
        carriedAt += static_cast<std::size_t>(length);
    }
    if (carriedAt != image.size()) {
        error = std::to_string(image.size() - carriedAt) + " bytes behind the message's end";
        return false;
    }
    return true;
}

}  // namespace message_fields
