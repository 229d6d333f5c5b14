// Packs and unpacks packets of several messages.
#include "several_messages.h"

#include <arpa/inet.h>

#include <cstring>

namespace host {

namespace {

constexpr std::size_t kLengthSize = sizeof(std::uint32_t);
constexpr std::size_t kFirstAt = kSeveralMark.size() + kLengthSize;

}  // namespace

bool SeveralMessages::add(const std::uint8_t* message, std::size_t length) {
    const std::size_t start = bytes.empty() ? kSeveralMark.size() : bytes.size();
    if (length > mostBytes || start + kLengthSize + length + 1 > mostBytes) {
        return false;
    }
    if (bytes.empty()) {
        bytes.reserve(mostBytes);
        bytes.assign(kSeveralMark.begin(), kSeveralMark.end());
        lengthOfFirst = length;
    }
    const std::uint32_t stored = htonl(static_cast<std::uint32_t>(length));
    bytes.resize(start + kLengthSize);
    std::memcpy(bytes.data() + start, &stored, kLengthSize);
    bytes.insert(bytes.end(), message, message + length);
    bytes.push_back(0);
    return true;
}

SeveralMessages::Packet SeveralMessages::packet() const {
    if (bytes.size() == kFirstAt + lengthOfFirst + 1) {
        return {bytes.data() + kFirstAt, lengthOfFirst};
    }
    return {bytes.data(), bytes.size()};
}

bool ReceivedMessages::next(Message& message, std::string& error) {
    if (length == 0) {
        return false;
    }
    std::uint32_t stored = 0;
    if (length < kLengthSize) {
        error = std::to_string(length) + " bytes behind the last of several messages";
        return false;
    }
    std::memcpy(&stored, bytes, kLengthSize);
    const std::size_t messageLength = ntohl(stored);
    const std::size_t left = length - kLengthSize;
    if (messageLength >= left) {
        error = "one of several messages names " + std::to_string(messageLength) + " bytes and a zero, " +
                std::to_string(left) + " are left";
        return false;
    }
    message = {bytes + kLengthSize, messageLength};
    bytes += kLengthSize + messageLength + 1;
    length = left - messageLength - 1;
    return true;
}

}  // namespace host
