// PacketFile: reads the transport stream packets of a file, which may be compressed with gzip.
// Threads: one.
// Blocks:  while the file is read; open() reads at most the first megabyte.
// Fails:   open() with a text that names the file and what is wrong; a read error ends the packets, and error() gives
//          the reason.
#pragma once

#include <sys/stat.h>

#include "packet_reader.h"

namespace dtvservice {

class PacketFile {
public:
    static std::unique_ptr<PacketFile> open(const std::string& path, std::string& error);

    /// The next packet, valid until the next call. Null at the end.
    const std::uint8_t* next() { return reader.next(); }
    /// The same, but searches at most a megabyte. Null also if that has no packet; isAtEnd() is then false.
    const std::uint8_t* nextNearby() { return reader.next(kLongestSearch); }
    bool isAtEnd() const { return reader.isAtEnd(); }
    /// Goes back to the first packet.
    void rewind() { reader.rewind(); }

    /// Whether another file has its path now, or it has been written to. False if there is no file any more.
    bool isReplaced() const;

    std::uint64_t skippedBytes() const { return reader.skippedBytes(); }
    void countIn(InputCounts& counts) { reader.countIn(counts); }
    /// What ended the packets early; empty after a regular end.
    const std::string& error() const { return reader.error(); }

private:
    /// Decompressed bytes that one search covers at most. The limit lets other files play on meanwhile.
    static constexpr std::uint64_t kLongestSearch = std::uint64_t{1024} * 1024;

    PacketFile(std::string newPath, std::unique_ptr<ByteSource> source, const struct stat& found);

    std::string path;
    PacketReader reader;
    // What tells the opened file from a later one.
    dev_t device;
    ino_t node;
    off_t size;
    timespec modified;
};

}  // namespace dtvservice
