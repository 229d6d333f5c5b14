// Reads fields from the front of bytes, and remembers when there were not enough.
#pragma once

#include "si/section.h"

namespace si {

class Cursor {
public:
    explicit Cursor(Bytes newBytes) : bytes(newBytes) {}

    std::size_t left() const { return bytes.size - at; }
    bool good() const { return !failed; }

    /// A number of so many bytes; 0 when they are not there.
    std::uint64_t number(std::size_t width) {
        const Bytes field = take(width);
        std::uint64_t value = 0;
        for (std::size_t index = 0; index < field.size; ++index) {
            value = value << 8U | field.data[index];
        }
        return value;
    }
    /// What was read does not fit: nothing more is there.
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
    /// Bytes behind a length field of 12 bits in two bytes, or of one byte.
    Bytes takeLong() { return take(size(2) & 0x0FFFU); }
    Bytes takeShort() { return take(size(1)); }
    /// A number of bytes that follow.
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
