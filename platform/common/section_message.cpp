// Format of a section message in the queue: length of the name, the name, length of the section, the section. Both ends
// run on one machine, so the lengths are in its byte order.
#include <cstring>

#include "velmora/msgqueue/ipc_message_queue.h"

namespace velmora::msgqueue {

namespace {

/// Keeps the compiler from reading the length again after a check: the writer may change it.
std::uint32_t lengthAt(const std::uint8_t* at) {
    std::uint32_t length = 0;
    std::memcpy(&length, at, sizeof length);
    asm volatile("" : "+r"(length));
    return length;
}

}  // namespace

IPCMessage::~IPCMessage() = default;

SectionDataIPCMessage::~SectionDataIPCMessage() {
    delete[] data;
}

std::size_t SectionDataIPCMessage::encode(std::uint8_t* bytes, std::size_t capacity) const {
    const auto nameLength = static_cast<std::uint32_t>(sessionName.size());
    const std::size_t total = 2 * sizeof nameLength + sessionName.size() + dataLength;
    if (total > capacity) {
        return 0;
    }
    std::uint8_t* at = bytes;
    const auto put = [&at](const void* from, std::size_t length) {
        if (length != 0) {
            std::memcpy(at, from, length);
            at += length;
        }
    };
    put(&nameLength, sizeof nameLength);
    put(sessionName.data(), sessionName.size());
    put(&dataLength, sizeof dataLength);
    put(data, dataLength);
    return total;
}

bool SectionDataIPCMessage::decode(const std::uint8_t* bytes, std::size_t length) {
    constexpr std::size_t kLengths = 2 * sizeof(std::uint32_t);
    if (data == nullptr || length < kLengths) {
        return false;
    }
    const std::uint32_t nameLength = lengthAt(bytes);
    if (nameLength > length - kLengths) {
        return false;
    }
    const std::uint32_t sectionLength = lengthAt(bytes + sizeof nameLength + nameLength);
    if (sectionLength != length - kLengths - nameLength || sectionLength > kBufferSize) {
        return false;
    }
    // Names are mostly of one length, for which the text keeps its place.
    if (sessionName.size() != nameLength) {
        sessionName.resize(nameLength);
    }
    std::memcpy(sessionName.data(), bytes + sizeof nameLength, nameLength);
    dataLength = sectionLength;
    std::memcpy(data, bytes + kLengths + nameLength, sectionLength);
    return true;
}

}  // namespace velmora::msgqueue
