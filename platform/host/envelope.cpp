// Packs and unpacks envelopes.
#include "envelope.h"

#include <arpa/inet.h>

#include <cstring>

namespace host {

namespace {

constexpr std::uint32_t kMagic = 0x44545631;  // "DTV1"

constexpr std::size_t kFirstWordAt = 4;
constexpr std::size_t kInterfaceAt = 8;
constexpr std::size_t kMessageAt = 12;
constexpr std::size_t kDirectionAt = 16;
constexpr std::size_t kTransactionAt = 20;
constexpr std::size_t kImageLengthAt = 24;

void put(std::uint8_t* at, std::uint32_t word) {
    const std::uint32_t network = htonl(word);
    std::memcpy(at, &network, sizeof network);
}

std::uint32_t get(const std::uint8_t* at) {
    std::uint32_t network = 0;
    std::memcpy(&network, at, sizeof network);
    return ntohl(network);
}

}  // namespace

bool beginsEnvelope(const std::uint8_t* packet, std::size_t length) {
    return length >= sizeof kMagic && get(packet) == kMagic;
}

void packEnvelope(const Envelope& envelope, std::uint8_t* bytes) {
    std::memset(bytes, 0, kEnvelopeSize);
    put(bytes, kMagic);
    put(bytes + kFirstWordAt, static_cast<std::uint32_t>(envelope.header.firstWord));
    put(bytes + kInterfaceAt, envelope.header.interfaceId);
    put(bytes + kMessageAt, envelope.header.messageId);
    bytes[kDirectionAt] = envelope.header.direction;
    put(bytes + kTransactionAt, envelope.transaction);
    put(bytes + kImageLengthAt, envelope.imageLength);
}

bool unpackEnvelope(const std::uint8_t* packet, std::size_t length, Envelope& envelope, std::string& error) {
    if (length < kEnvelopeSize) {
        error = "packet of " + std::to_string(length) + " bytes is shorter than an envelope";
        return false;
    }
    if (get(packet) != kMagic) {
        error = "packet does not begin with the envelope's mark";
        return false;
    }
    envelope.header.firstWord = static_cast<std::int32_t>(get(packet + kFirstWordAt));
    envelope.header.interfaceId = get(packet + kInterfaceAt);
    envelope.header.messageId = get(packet + kMessageAt);
    envelope.header.direction = packet[kDirectionAt];
    envelope.transaction = get(packet + kTransactionAt);
    envelope.imageLength = get(packet + kImageLengthAt);
    if (envelope.imageLength != length - kEnvelopeSize) {
        error = "image of " + std::to_string(length - kEnvelopeSize) + " bytes, " +
                std::to_string(envelope.imageLength) + " announced";
        return false;
    }
    return true;
}

}  // namespace host
