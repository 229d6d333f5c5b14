// ByteSource: where the bytes of a transport stream come from.
// Threads: one.   Blocks: read() until there are bytes.   Fails: by what read() gives, and error().
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

    /// Up to so many bytes; 0 at the end, or where reading failed, which error() then tells.
    virtual std::size_t read(std::uint8_t* bytes, std::size_t capacity) = 0;
    /// Back to the first byte; false where that is not possible.
    virtual bool rewind() { return false; }
    /// What ended the bytes early, with the source's name; empty at a proper end.
    const std::string& error() const { return problem; }

protected:
    std::string problem;
};

}  // namespace dtvservice
