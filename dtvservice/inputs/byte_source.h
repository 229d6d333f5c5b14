// ByteSource: an origin of a transport stream's bytes.
// Threads: one.
// Blocks:  read() until there are bytes.
// Fails:   read() returns 0; error() gives the reason.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace dtvservice {

class ByteSource {
public:
    ByteSource() = default;
    ByteSource(const ByteSource&) = delete;
    ByteSource& operator=(const ByteSource&) = delete;
    virtual ~ByteSource() = default;

    /// Reads up to `capacity` bytes. Returns 0 at the end or if reading failed; error() then gives the reason.
    virtual std::size_t read(std::uint8_t* bytes, std::size_t capacity) = 0;
    /// Goes back to the first byte; false if that is not possible.
    virtual bool rewind() { return false; }
    /// What ended the bytes early, with the source's name; empty after a regular end.
    const std::string& error() const { return problem; }

protected:
    std::string problem;
};

}  // namespace dtvservice
