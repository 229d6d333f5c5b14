// PacketReader: bytes as a row of transport stream packets of 188 bytes, which may stand 192 (a time stamp in front) or
// 204 bytes apart (check bytes behind). Bytes that are in no packet are skipped and counted.
// Threads: one.   Blocks: while bytes are read.   Fails: the row ends; the source's error() tells why.
#pragma once

#include <limits>
#include <memory>
#include <vector>

#include "byte_source.h"
#include "ts_packet.h"

namespace dtvservice {

class PacketReader {
public:
    explicit PacketReader(std::unique_ptr<ByteSource> newSource);

    /// The next packet, valid until the next call; null at the end, or where so many bytes one after the other are in
    /// none.
    const std::uint8_t* next(std::uint64_t longestSearch = std::numeric_limits<std::uint64_t>::max());
    /// Goes back to the first packet, where the source can.
    bool rewind();

    /// Whether next() gave none because there are no more.
    bool isAtEnd() const { return exhausted && at == end; }
    /// Whether next() gives a packet without reading.
    bool hasBuffered() const { return stride != 0 && end - at >= stride; }
    std::uint64_t skippedBytes() const { return skipped; }
    const std::string& error() const { return source->error(); }

private:
    bool fill();
    bool inStep(std::size_t position, std::size_t distance) const;
    std::size_t strideAt(std::size_t position) const;

    std::unique_ptr<ByteSource> source;
    std::vector<std::uint8_t> buffer;
    std::size_t at = 0;   // the first byte not yet handed out
    std::size_t end = 0;  // behind the last byte read
    bool exhausted = false;
    std::size_t stride = 0;  // from packet to packet; 0 while they are being looked for
    std::uint64_t skipped = 0;
};

}  // namespace dtvservice
