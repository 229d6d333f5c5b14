// Reads the descriptors of events.
#include "si/event.h"

#include <algorithm>

#include "cursor.h"
#include "si/text.h"

namespace si {

namespace {

constexpr std::uint8_t kExtendedEventDescriptor = 0x4E;
constexpr std::uint8_t kContentDescriptor = 0x54;
constexpr std::uint8_t kParentalRatingDescriptor = 0x55;
constexpr std::size_t kCode = 3;  // letters of a language or country

/// One extended event descriptor.
struct Part {
    std::uint8_t number = 0;
    std::string language;
    std::string items;
    std::string text;
};

Part partOf(const Descriptor& descriptor) {
    Cursor cursor(descriptor.bytes);
    Part part;
    part.number = static_cast<std::uint8_t>(cursor.number(1) >> 4U);
    part.language = plainText(cursor.take(kCode));
    Cursor items(cursor.takeShort());
    while (items.left() != 0) {
        const std::string description = toUtf8(items.takeShort());
        const std::string item = toUtf8(items.takeShort());
        if (!items.good()) {
            break;
        }
        if (!description.empty()) {
            part.items.append("\n").append(description).append(": ");
        }
        part.items += item;
    }
    part.text = toUtf8(cursor.takeShort());
    return part;
}

}  // namespace

std::string extendedText(const Descriptors& event) {
    std::vector<Part> parts;
    for (const Descriptor& descriptor : event) {
        if (descriptor.tag == kExtendedEventDescriptor) {
            Part part = partOf(descriptor);
            if (parts.empty() || part.language == parts.front().language) {
                parts.push_back(std::move(part));
            }
        }
    }
    std::stable_sort(parts.begin(), parts.end(),
                     [](const Part& one, const Part& other) { return one.number < other.number; });
    std::string items;
    std::string text;
    for (const Part& part : parts) {
        items += part.items;
        text += part.text;
    }
    items.erase(0, items.find_first_not_of('\n'));
    return items + (items.empty() || text.empty() ? "" : "\n") + text;
}

std::vector<ParentalRating> parentalRatings(const Descriptors& event) {
    std::vector<ParentalRating> ratings;
    for (const Descriptor& descriptor : event) {
        Cursor cursor(descriptor.bytes);
        while (descriptor.tag == kParentalRatingDescriptor && cursor.left() > kCode) {
            const std::string country = plainText(cursor.take(kCode));
            ratings.push_back({country, static_cast<std::uint8_t>(cursor.number(1))});
        }
    }
    return ratings;
}

std::vector<std::uint8_t> contentNibbles(const Descriptors& event) {
    constexpr std::size_t kEntry = 2;  // the nibbles, and a byte of the broadcaster's
    std::vector<std::uint8_t> contents;
    for (const Descriptor& descriptor : event) {
        const std::vector<std::uint8_t>& bytes = descriptor.bytes;
        for (std::size_t at = 0; descriptor.tag == kContentDescriptor && at + kEntry <= bytes.size(); at += kEntry) {
            contents.push_back(bytes[at]);
        }
    }
    return contents;
}

}  // namespace si
