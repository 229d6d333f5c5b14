// Cursor: reads fields from the front of a range of bytes. A read beyond the end marks it as failed.
#pragma once

#include "si/section.h"

namespace si {

class Cursor {
public:
    explicit Cursor(Bytes newBytes) : bytes(newBytes) {}

    std::size_t left() const { return bytes.size - at; }
    bool good() const { return !failed; }

    /// A number of `width` bytes; 0 if there are not enough.
    std::uint64_t number(std::size_t width) {
        const Bytes field = take(width);
        std::uint64_t value = 0;
        for (std::size_t index = 0; index < field.size; ++index) {
            value = value << 8U | field.data[index];
        }
        return value;
    }
    /// Marks the data as malformed; nothing more can be read.
    void fail() {
        failed = true;
        at = bytes.size;
    }
    Bytes take(std::size_t count) {
        if (count > left()) {
            fail();
            return {};
        }
        at += count;
        return {bytes.data + at - count, count};
    }
    Bytes rest() { return take(left()); }
    /// The bytes after their length field. It has 12 bits in two bytes (takeLong) or one byte (takeShort).
    Bytes takeLong() { return take(size(2) & 0x0FFFU); }
    Bytes takeShort() { return take(size(1)); }
    /// A length field of `width` bytes.
    std::size_t size(std::size_t width) { return static_cast<std::size_t>(number(width)); }

private:
    Bytes bytes;
    std::size_t at = 0;
    bool failed = false;
};

inline std::string plainText(Bytes bytes) {
    return bytes.size == 0 ? std::string() : std::string(reinterpret_cast<const char*>(bytes.data), bytes.size);
}

}  // namespace si
