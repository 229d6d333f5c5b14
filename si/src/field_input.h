// FieldInput: the bytes of a table, descriptor or loop, read bit by bit. Remembers the first field that does not fit.
// Threads: one.
// Blocks:  never.
// Fails:   never reads beyond the bytes; after a field that does not fit, nothing more can be read.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "si/section.h"

namespace si {

/// Which descriptors a loop has: in some tables, some tags have a meaning of their own.
enum class Scope : std::uint8_t { general, application, update, ipMac, resolution, extension };

/// Where a field that does not fit is shown: in each entry of a table, so that the entries beside it keep their fields,
/// or once for a whole descriptor.
enum class Kind : std::uint8_t { table, descriptor };

class FieldInput {
public:
    FieldInput(Bytes newBytes, Kind newKind, Scope newScope) : kind(newKind), scope(newScope), bytes(newBytes) {}

    const Kind kind;
    const Scope scope;
    /// The numbers that have been read, by their names; conditions and lengths refer to them.
    std::vector<std::pair<std::string_view, std::uint64_t>> values;
    /// What is wrong and from which byte on; empty if all is well.
    std::string wrong;
    Bytes unread;

    /// The number that has been read last by this name, or 0.
    std::uint64_t value(std::string_view name) const {
        const auto found =
            std::find_if(values.rbegin(), values.rend(), [&](const auto& known) { return known.first == name; });
        return found == values.rend() ? 0 : found->second;
    }
    bool good() const { return !failed; }
    bool atEnd() const { return failed || position >= bits(); }
    std::size_t bitsLeft() const { return failed ? 0 : bits() - position; }
    std::size_t bytesLeft() const { return bitsLeft() / kBitsOfByte; }
    std::size_t place() const { return position; }

    /// A number of up to 64 bits. If it does not fit, it is 0 and `field` is the wrong one.
    std::uint64_t number(std::string_view field, std::size_t count) {
        if (count > bitsLeft()) {
            fail(field, " is missing", position);
            return 0;
        }
        std::uint64_t value = 0;
        for (const std::size_t end = position + count; position < end; ++position) {
            value =
                value << 1U | (bytes.data[position / kBitsOfByte] >> (kBitsOfByte - 1 - position % kBitsOfByte) & 1U);
        }
        return value;
    }
    /// A bit ahead; 0 behind the end.
    bool ahead(std::size_t distance) const {
        const std::size_t at = position + distance;
        return bitsLeft() > distance &&
               (bytes.data[at / kBitsOfByte] >> (kBitsOfByte - 1 - at % kBitsOfByte) & 1U) != 0;
    }
    void skip(std::size_t count) {
        if (count > bitsLeft()) {
            fail("reserved", " is missing", position);
        } else {
            position += count;
        }
    }
    Bytes take(std::string_view field, std::size_t count) {
        if (count > bytesLeft()) {
            fail(field, " is missing", position);
            return {};
        }
        const Bytes taken(bytes.data + position / kBitsOfByte, count);
        position += count * kBitsOfByte;
        return taken;
    }
    Bytes rest() { return take("", bytesLeft()); }
    /// The bytes after a length field of `count` bits.
    /// In reports, the field has its name with `suffix`.
    Bytes sized(std::string_view field, std::size_t count, const char* suffix = "") {
        const std::size_t start = position;
        if (count > bitsLeft()) {
            fail(field, std::string(suffix) + " is missing", start);
            return {};
        }
        const auto length = static_cast<std::size_t>(number(field, count));
        if (length > bytesLeft()) {
            fail(field,
                 std::string(suffix) + " is " + std::to_string(length) + ", bytes left: " + std::to_string(bytesLeft()),
                 start);
            return {};
        }
        return take(field, length);
    }
    /// Reports a field with a wrong value, whose bytes begin at a bit. The fields behind it can be read.
    void complain(std::string_view field, const std::string& reason, std::size_t start) {
        if (wrong.empty() && !failed) {
            wrong = std::string(field) + reason;
            unread = {bytes.data + start / kBitsOfByte, bytes.size - start / kBitsOfByte};
        }
    }
    /// Reports a field that does not fit, and ends the reading.
    void fail(std::string_view field, const std::string& reason, std::size_t start) {
        complain(field, reason, start);
        failed = true;
    }

private:
    static constexpr std::size_t kBitsOfByte = 8;

    std::size_t bits() const { return bytes.size * kBitsOfByte; }

    Bytes bytes;
    std::size_t position = 0;
    bool failed = false;
};

}  // namespace si
