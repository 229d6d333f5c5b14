// Input: takes values from the front of a fuzzer's bytes. When they have run out, numbers are 0 and texts empty.
// Threads: one.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace fuzz {

class Input {
public:
    Input(const std::uint8_t* newBytes, std::size_t newSize) : bytes(newBytes), left(newSize) {}

    bool isEmpty() const { return left == 0; }
    std::uint8_t u8() {
        if (left == 0) {
            return 0;
        }
        --left;
        return *bytes++;
    }
    std::uint16_t u16() {
        const unsigned int high = u8();
        return static_cast<std::uint16_t>(high << 8U | u8());
    }
    std::uint32_t u32() {
        const std::uint32_t high = u16();
        return high << 16U | u16();
    }
    /// The next bytes, at most `count`, as a copy: a sanitizer then finds an access beyond its end.
    std::vector<std::uint8_t> take(std::size_t count) {
        const std::size_t size = std::min(count, left);
        std::vector<std::uint8_t> taken(bytes, bytes + size);
        bytes += size;
        left -= size;
        return taken;
    }
    /// Bytes behind a length of 16 bits.
    std::vector<std::uint8_t> chunk() {
        const std::size_t count = u16();
        return take(count);
    }
    std::string text() {
        const std::vector<std::uint8_t> taken = chunk();
        return {taken.begin(), taken.end()};
    }
    std::vector<std::uint8_t> rest() { return take(left); }
    std::string restAsText() {
        const std::vector<std::uint8_t> taken = rest();
        return {taken.begin(), taken.end()};
    }

private:
    const std::uint8_t* bytes;
    std::size_t left;
};

}  // namespace fuzz
