// Record images: turns a record in memory into the bytes that travel, and received bytes back into a record, both by
// the record's byte-order table alone.
// Threads: any; the functions share no state.
// Blocks:  never.
// Fails:   with a text that names what was wrong and where; never reads outside of the given bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "frame/endian_table.h"

namespace platform_common {

/// Bytes that the fields of a record take on the wire, a carrier counted as 8. 1 for a record without fields.
std::size_t wireSizeOf(const ovxEndianTable& table);

/// The wire image: fields in network byte order at their wire offsets, then the carried bytes in field order.
/// A record without fields gives one zero byte.
std::vector<std::uint8_t> encodeRecord(const ovxEndianTable& table, const void* record);

/// A received record in host order and layout, with the carried bytes that its carriers point to. Move-only.
class DecodedRecord {
public:
    const void* record() const { return bytes.data(); }
    std::size_t size() const { return bytes.size(); }

private:
    friend class RecordDecoder;
    std::vector<std::uint8_t> bytes;
    std::vector<std::unique_ptr<char[]>> carried;
};

/// Reads a wire image. False, and `error` filled, when the image is too short, too long, or a carrier's length does not
/// fit what follows.
bool decodeRecord(const ovxEndianTable& table, const std::uint8_t* image, std::size_t length, DecodedRecord& decoded,
                  std::string& error);

}  // namespace platform_common
