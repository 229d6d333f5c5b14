// Finds packets in bytes.
#include "packet_reader.h"

#include <algorithm>
#include <cstring>

namespace dtvservice {

namespace {

constexpr std::size_t kStrides[] = {broadcast::kPacketSize, 192, 204};
constexpr std::size_t kLongestStride = 204;
constexpr std::size_t kTimestampSize = 4;  // before each packet when packets are 192 bytes apart
constexpr std::size_t kBufferSize = 1024 * broadcast::kPacketSize;
/// Number of equidistant sync bytes that prove a packet's start. Fewer are enough at the end of the bytes.
constexpr std::size_t kStepsToBelieve = 4;

}  // namespace

PacketReader::PacketReader(std::unique_ptr<ByteSource> newSource) : source(std::move(newSource)), buffer(kBufferSize) {}

bool PacketReader::rewind() {
    if (!source->rewind()) {
        return false;
    }
    at = 0;
    end = 0;
    exhausted = false;
    stride = 0;
    skipped = 0;
    countedSkipped = 0;
    return true;
}

/// Moves the unused bytes to the front of the buffer and reads more after them; false if there are no more.
bool PacketReader::fill() {
    if (exhausted) {
        return false;
    }
    std::memmove(buffer.data(), buffer.data() + at, end - at);
    end -= at;
    at = 0;
    const std::size_t size = source->read(buffer.data() + end, buffer.size() - end);
    exhausted = size == 0;
    end += size;
    if (counts != nullptr) {
        counts->bytes += size;
        count();
    }
    return size != 0;
}

bool PacketReader::inStep(std::size_t position, std::size_t distance) const {
    for (std::size_t step = 0; step < kStepsToBelieve; ++step) {
        const std::size_t where = position + step * distance;
        if (where >= end) {
            return step != 0 && position + broadcast::kPacketSize <= end;
        }
        if (buffer[where] != broadcast::kSyncByte) {
            return false;
        }
    }
    return true;
}

/// The distance between the packets that begin here; 0 if none does.
std::size_t PacketReader::strideAt(std::size_t position) const {
    const auto* const found = std::find_if(std::begin(kStrides), std::end(kStrides),
                                           [&](std::size_t distance) { return inStep(position, distance); });
    return found == std::end(kStrides) ? 0 : *found;
}

const std::uint8_t* PacketReader::search(std::uint64_t longestSearch) {
    const std::uint8_t* const packet = find(longestSearch);
    count();
    return packet;
}

/// A time stamp before the first packet is no skipped byte, but counts as one until the packet is found.
void PacketReader::count() {
    if (counts != nullptr && skipped != countedSkipped) {
        counts->skippedBytes += skipped - countedSkipped;
        countedSkipped = skipped;
    }
}

const std::uint8_t* PacketReader::find(std::uint64_t longestSearch) {
    for (std::uint64_t searched = 0; searched < longestSearch; ++searched) {
        const std::size_t needed = stride != 0 ? stride : kStepsToBelieve * kLongestStride;
        while (end - at < needed && fill()) {
        }
        if (end - at < broadcast::kPacketSize) {
            skipped += end - at;
            at = end;
            return nullptr;
        }
        if (stride == 0 || buffer[at] != broadcast::kSyncByte) {
            stride = strideAt(at);
            // The bytes before the first packet are its time stamp, so they do not count as skipped.
            skipped -= stride == 192 ? std::min<std::uint64_t>(skipped, kTimestampSize) : 0;
        }
        if (stride != 0) {
            const std::uint8_t* const packet = buffer.data() + at;
            at += std::min(stride, end - at);
            return packet;
        }
        ++at;
        ++skipped;
    }
    return nullptr;
}

}  // namespace dtvservice
