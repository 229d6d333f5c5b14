// Finding packets in bytes.
#include "packet_reader.h"

#include <algorithm>
#include <cstring>

namespace dtvservice {

namespace {

constexpr std::size_t kStrides[] = {broadcast::kPacketSize, 192, 204};
constexpr std::size_t kLongestStride = 204;
constexpr std::size_t kTimestampSize = 4;  // in front of each packet that is 192 bytes from the next
constexpr std::size_t kBufferSize = 1024 * broadcast::kPacketSize;
/// Sync bytes in step that make a beginning; fewer only where the bytes end.
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
    return true;
}

/// Moves what is left to the front and reads behind it; false when nothing came.
bool PacketReader::fill() {
    if (exhausted) {
        return false;
    }
    std::memmove(buffer.data(), buffer.data() + at, end - at);
    end -= at;
    at = 0;
    const std::size_t count = source->read(buffer.data() + end, buffer.size() - end);
    exhausted = count == 0;
    end += count;
    return count != 0;
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

/// How far apart the packets are that begin here; 0 where none does.
std::size_t PacketReader::strideAt(std::size_t position) const {
    const auto* const found = std::find_if(std::begin(kStrides), std::end(kStrides),
                                           [&](std::size_t distance) { return inStep(position, distance); });
    return found == std::end(kStrides) ? 0 : *found;
}

const std::uint8_t* PacketReader::next(std::uint64_t longestSearch) {
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
            // The time stamp of the first packet belongs to it.
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
