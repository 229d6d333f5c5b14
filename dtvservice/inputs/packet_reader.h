// PacketReader: finds the transport stream packets in a source's bytes. Packets have 188 bytes, and may have a time
// stamp before them (192 bytes per packet) or check bytes after them (204). Bytes outside packets are skipped and
// counted.
// Threads: one.
// Blocks:  while bytes are read.
// Fails:   the packets end; the source's error() gives the reason.
#pragma once

#include <boost/align/aligned_allocator.hpp>
#include <limits>
#include <memory>
#include <vector>

#include "byte_source.h"
#include "input_report.h"
#include "ts_packet.h"

namespace dtvservice {

class PacketReader {
public:
    explicit PacketReader(std::unique_ptr<ByteSource> newSource);

    /// The next packet, valid until the next call. Null at the end, or if `longestSearch` bytes in a row have no
    /// packet.
    const std::uint8_t* next(std::uint64_t longestSearch = std::numeric_limits<std::uint64_t>::max()) {
        if (!hasBuffered() || buffer[at] != broadcast::kSyncByte) {
            return search(longestSearch);
        }
        const std::uint8_t* const packet = buffer.data() + at;
        at += stride;
        return packet;
    }
    /// Goes back to the first packet; false if the source cannot.
    bool rewind();

    /// Whether there are no more packets.
    bool isAtEnd() const { return exhausted && at == end; }
    /// Whether next() can return a packet without reading from the source.
    bool hasBuffered() const { return stride != 0 && end - at >= stride; }
    std::uint64_t skippedBytes() const { return skipped; }
    /// Counts the bytes from now on there, too. The counts must outlive this.
    void countIn(InputCounts& newCounts) { counts = &newCounts; }
    const std::string& error() const { return source->error(); }

private:
    bool fill();
    bool inStep(std::size_t position, std::size_t distance) const;
    std::size_t strideAt(std::size_t position) const;
    const std::uint8_t* search(std::uint64_t longestSearch);
    const std::uint8_t* find(std::uint64_t longestSearch);
    void count();

    std::unique_ptr<ByteSource> source;
    // The system copies a file's pages faster to the start of a cache line.
    static constexpr std::size_t kCacheLine = 64;
    std::vector<std::uint8_t, boost::alignment::aligned_allocator<std::uint8_t, kCacheLine>> buffer;
    std::size_t at = 0;   // the next byte to use
    std::size_t end = 0;  // after the last byte read
    bool exhausted = false;
    std::size_t stride = 0;  // distance from packet to packet; 0 while searching
    std::uint64_t skipped = 0;
    InputCounts* counts = nullptr;
    std::uint64_t countedSkipped = 0;  // of `skipped`, in the counts
};

}  // namespace dtvservice
