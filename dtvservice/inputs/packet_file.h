// PacketFile: a file as a row of transport stream packets; compressed by gzip or not.
// Threads: one.   Blocks: while the file is read; open() no longer than it takes to look through its first megabyte.
// Fails:   open() with a text that names the file and what is wrong with it; a read error ends the row, with a text.
#pragma once

#include "packet_reader.h"

namespace dtvservice {

class PacketFile {
public:
    static std::unique_ptr<PacketFile> open(const std::string& path, std::string& error);

    /// The next packet, valid until the next call; null at the end.
    const std::uint8_t* next() { return reader.next(); }
    /// The same, but looks no further than a megabyte: null also where that has none, and it is not at its end.
    const std::uint8_t* nextNearby() { return reader.next(kLongestSearch); }
    bool isAtEnd() const { return reader.isAtEnd(); }
    /// Goes back to the first packet.
    void rewind() { reader.rewind(); }

    std::uint64_t skippedBytes() const { return reader.skippedBytes(); }
    /// What ended the row early; empty at a proper end.
    const std::string& error() const { return reader.error(); }

private:
    /// Bytes, decompressed, in which a packet is looked for at once: whoever plays a file has others to play.
    static constexpr std::uint64_t kLongestSearch = 1024 * 1024;

    explicit PacketFile(std::unique_ptr<ByteSource> source) : reader(std::move(source)) {}

    PacketReader reader;
};

}  // namespace dtvservice
