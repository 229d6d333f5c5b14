// Record images: encodes a record in memory into its wire bytes, and decodes received bytes into a record. Both use
// only the record's byte-order table.
// Threads: any; the functions share no state.
// Blocks:  never.
// Fails:   with a text that names the error and its position; never reads outside the given bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "frame/endian_table.h"

namespace platform_common {

/// Number of bytes that the fields of a record take on the wire; a carrier counts as 8. 1 for a record without fields.
std::size_t wireSizeOf(const ovxEndianTable& table);

/// Writes the wire image: the fields in network byte order at their wire offsets, followed by the carried bytes in
/// field order. A record without fields becomes one zero byte. Returns the image's size; if that is more than `room`,
/// only some of it was written.
std::size_t encodeRecord(const ovxEndianTable& table, const void* record, std::uint8_t* image, std::size_t room);
std::vector<std::uint8_t> encodeRecord(const ovxEndianTable& table, const void* record);

/// A received record in host byte order and layout, together with the bytes of its carriers, each followed by a zero.
/// Move-only. One that is decoded into again keeps its memory.
class DecodedRecord {
public:
    const void* record() const { return bytes.data(); }
    std::size_t size() const { return bytes.size(); }

private:
    friend class RecordDecoder;
    std::vector<std::uint8_t> bytes;
    std::unique_ptr<char[]> carried;
    std::size_t carriedRoom = 0;
};

/// Decodes a wire image. False, with a text in `error`, when the image is too short or too long, or when a carrier's
/// length does not fit the rest of the image.
bool decodeRecord(const ovxEndianTable& table, const std::uint8_t* image, std::size_t length, DecodedRecord& decoded,
                  std::string& error);

/// The same for a table whose wireSizeOf() is known, and without a copy of the carried bytes that end the image, which
/// is the only carrier of most messages: the record points to them, so it is valid as long as the image. The image has
/// room for a byte more, which becomes the zero.
bool decodeRecordInPlace(const ovxEndianTable& table, std::size_t wireSize, std::uint8_t* image, std::size_t length,
                         DecodedRecord& decoded, std::string& error);

}  // namespace platform_common
