// PacketFile: a file as a row of transport stream packets. Bytes that are in no packet are skipped and counted.
// Threads: one.   Blocks: while the file is read.
// Fails:   open() with a text that names the file and what is wrong with it; a read error ends the row, with a text.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "ts_packet.h"

namespace broadcast {

class PacketFile {
public:
    static std::unique_ptr<PacketFile> open(const std::string& path, std::string& error);

    /// The next packet, valid until the next call; null at the end.
    const std::uint8_t* next();
    /// Goes back to the first packet.
    void rewind();

    std::uint64_t skippedBytes() const { return skipped; }
    /// What ended the row early; empty at a proper end.
    const std::string& error() const { return problem; }

private:
    struct Closer {
        void operator()(std::FILE* closing) const { std::fclose(closing); }
    };
    PacketFile(std::string newPath, std::FILE* newFile);

    bool fill();
    bool inStep(std::size_t position) const;

    std::string path;
    std::unique_ptr<std::FILE, Closer> file;
    std::vector<std::uint8_t> buffer;
    std::size_t at = 0;   // the first byte not yet handed out
    std::size_t end = 0;  // behind the last byte read
    bool exhausted = false;
    bool synchronised = false;
    std::uint64_t skipped = 0;
    std::string problem;
};

}  // namespace broadcast
