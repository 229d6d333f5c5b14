// Reads references to objects.
#include "biop_fields.h"

namespace si {

namespace {

constexpr std::uint64_t kBiopProfile = 0x49534F06;
constexpr std::uint64_t kLiteOptionsProfile = 0x49534F05;
constexpr std::uint64_t kObjectLocation = 0x49534F50;
constexpr std::uint64_t kConnBinder = 0x49534F40;
constexpr std::uint64_t kServiceLocation = 0x49534F46;

/// The service domain is an NSAP address with the carousel and the service (TR 101 202, clause 4.7.3.3).
std::optional<ServiceLocation> serviceLocationIn(Bytes component) {
    constexpr std::size_t kNsapHead = 2;
    constexpr std::size_t kSpecifier = 4;
    Cursor cursor(component);
    Cursor nsap(cursor.takeShort());
    ServiceLocation location;
    nsap.take(kNsapHead);
    location.carouselId = static_cast<std::uint32_t>(nsap.number(4));
    nsap.take(kSpecifier);
    location.transportStreamId = static_cast<std::uint16_t>(nsap.number(2));
    location.originalNetworkId = static_cast<std::uint16_t>(nsap.number(2));
    location.serviceId = static_cast<std::uint16_t>(nsap.number(2));
    return cursor.good() && nsap.good() ? std::optional(location) : std::nullopt;
}

bool readLocation(Bytes component, ObjectReference& reference) {
    Cursor location(component);
    reference.carouselId = static_cast<std::uint32_t>(location.number(4));
    reference.moduleId = static_cast<std::uint16_t>(location.number(2));
    location.take(2);  // version
    reference.key = plainText(location.takeShort());
    return location.good();
}

/// The first tap for the delivery. Its selector has a type, the transaction_id and a time-out.
std::optional<ObjectReference::Delivery> deliveryIn(Bytes component) {
    constexpr std::uint64_t kDeliveryParaUse = 0x0016;
    constexpr std::uint64_t kMessageSelector = 0x0001;
    Cursor binder(component);
    std::optional<ObjectReference::Delivery> delivery;
    readCounted(binder, 1, [&] {
        const Tap tap = readTap(binder);
        Cursor selector(tap.selector);
        const bool isMessage = selector.number(2) == kMessageSelector;
        const auto transactionId = static_cast<std::uint32_t>(selector.number(4));
        if (!delivery && tap.use == kDeliveryParaUse && isMessage && selector.good()) {
            delivery = ObjectReference::Delivery{tap.associationTag, transactionId};
        }
    });
    return delivery;
}

/// Calls `read` with the tag and the data of each component of a profile.
template <typename Read>
void readComponents(Bytes profile, Read read) {
    Cursor cursor(profile);
    cursor.take(1);  // byte order
    readCounted(cursor, 1, [&] {
        const std::uint64_t tag = cursor.number(4);
        const Bytes data = cursor.takeShort();
        if (cursor.good()) {
            read(tag, data);
        }
    });
}

std::optional<ObjectReference> biopReferenceIn(Bytes profile) {
    ObjectReference reference;
    bool hasLocation = false;
    readComponents(profile, [&](std::uint64_t tag, Bytes data) {
        if (tag == kObjectLocation && !hasLocation) {
            hasLocation = readLocation(data, reference);
        } else if (tag == kConnBinder && !reference.delivery) {
            reference.delivery = deliveryIn(data);
        }
    });
    return hasLocation ? std::optional(std::move(reference)) : std::nullopt;
}

std::optional<ObjectReference> outsideReferenceIn(Bytes profile) {
    ObjectReference reference;
    readComponents(profile, [&](std::uint64_t tag, Bytes data) {
        if (tag == kServiceLocation) {
            reference.elsewhere = serviceLocationIn(data);
        }
    });
    return reference.elsewhere ? std::optional(std::move(reference)) : std::nullopt;
}

}  // namespace

Tap readTap(Cursor& cursor) {
    Tap tap;
    cursor.take(2);  // identifier
    tap.use = cursor.number(2);
    tap.associationTag = static_cast<std::uint16_t>(cursor.number(2));
    tap.selector = cursor.takeShort();
    return tap;
}

std::optional<ObjectReference> readReference(Cursor& cursor) {
    constexpr std::size_t kAlignment = 4;
    const std::size_t typeLength = cursor.size(4);
    cursor.take(typeLength);
    cursor.take((kAlignment - typeLength % kAlignment) % kAlignment);
    std::optional<ObjectReference> reference;
    readCounted(cursor, 4, [&] {
        const std::uint64_t tag = cursor.number(4);
        const Bytes profile = cursor.take(cursor.size(4));
        if (reference || !cursor.good()) {
            return;
        }
        if (tag == kBiopProfile) {
            reference = biopReferenceIn(profile);
        } else if (tag == kLiteOptionsProfile) {
            reference = outsideReferenceIn(profile);
        }
    });
    return reference;
}

}  // namespace si
