// Writes programmes.
#include "programme.h"

#include "si/event.h"

namespace tvbrowser {

namespace {

constexpr std::uint8_t kPrivateDataSpecifier = 0x5F;
constexpr std::uint8_t kExtension = 0x7F;
constexpr std::uint8_t kFirstPrivate = 0x80;  // of tags and of extensions

json ratingsOf(const si::Eit::Event& event) {
    json ratings = json::array();
    for (const si::ParentalRating& each : si::parentalRatings(event.descriptors)) {
        ratings.push_back({{"country", safeText(each.country)}, {"rating", each.rating}});
    }
    return ratings;
}

/// The specifier in the loop applies to the private descriptors behind it (EN 300 468, clause 6.2.31).
json descriptorsOf(const si::Eit::Event& event) {
    json descriptors = json::array();
    std::optional<std::uint32_t> specifier;
    for (const si::Descriptor& each : event.descriptors) {
        if (each.tag == kPrivateDataSpecifier && each.bytes.size() >= 4) {
            specifier = std::uint32_t{each.bytes[0]} << 24U | std::uint32_t{each.bytes[1]} << 16U |
                        std::uint32_t{each.bytes[2]} << 8U | each.bytes[3];
        }
        const bool isExtension = each.tag == kExtension && !each.bytes.empty();
        const bool isPrivate = each.tag >= kFirstPrivate || (isExtension && each.bytes[0] >= kFirstPrivate);
        descriptors.push_back({{"tag", each.tag},
                               {"extension", isExtension ? json(each.bytes[0]) : json()},
                               {"privateDataSpecifier", isPrivate ? orNull(specifier) : json()},
                               {"bytes", hexText(each.bytes)}});
    }
    return descriptors;
}

}  // namespace

si::Triplet tripletOf(const si::Eit& eit) {
    return {eit.originalNetworkId, eit.transportStreamId, eit.serviceId};
}

json programmeValue(const si::Triplet& channel, const si::Eit::Event& event) {
    return {{"channel", tripletValue(channel)},
            {"eventId", event.eventId},
            {"running", event.runningStatus},
            {"name", safeText(event.name)},
            {"text", safeText(event.text)},
            {"longText", safeText(si::extendedText(event.descriptors))},
            {"language", safeText(event.language)},
            {"startTime", orNull(event.start)},
            {"duration", event.durationSeconds},
            {"parentalRatings", ratingsOf(event)},
            {"content", si::contentNibbles(event.descriptors)},
            {"descriptors", descriptorsOf(event)}};
}

}  // namespace tvbrowser
