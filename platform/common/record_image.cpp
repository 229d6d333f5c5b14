// Record images: both directions iterate over the byte-order table in the same way.
#include "platform_common/record_image.h"

#include <arpa/inet.h>
#include <endian.h>

#include <algorithm>
#include <boost/container/small_vector.hpp>
#include <cstring>

namespace platform_common {

namespace {

/// Calls visit(kind, offset in memory) for every scalar and every carrier pointer of a record, in ascending order of
/// offset.
template <typename Visitor>
void walkFields(const ovxEndianTable& table, std::size_t base, Visitor&& visit) {
    for (const ovxEndianEntry* entry = table.entries; !entry->isEnd(); ++entry) {
        if (entry->kind() == ovxEndianKindNested) {
            walkFields(*entry->nested, base + entry->offset(), visit);
        } else {
            visit(entry->kind(), base + entry->offset());
        }
    }
}

/// Width on the wire. A carrier's pointer is 32 zero bits there, whatever its width in memory.
std::size_t wireWidth(std::uint32_t kind) {
    return kind == ovxEndianKindCarriedBytes ? 4 : kind;
}

template <typename Word>
Word loadWord(const void* at) {
    Word value;
    std::memcpy(&value, at, sizeof value);
    return value;
}

template <typename Word>
void storeWord(void* at, Word value) {
    std::memcpy(at, &value, sizeof value);
}

/// Copies a scalar and converts it between host and network byte order. The same conversion serves both directions.
void convertScalar(std::uint32_t kind, const std::uint8_t* from, std::uint8_t* to) {
    switch (kind) {
        case ovxEndianKind16:
            storeWord(to, htons(loadWord<std::uint16_t>(from)));
            break;
        case ovxEndianKind32:
            storeWord(to, htonl(loadWord<std::uint32_t>(from)));
            break;
        case ovxEndianKind64:
            storeWord(to, htobe64(loadWord<std::uint64_t>(from)));
            break;
        default:
            *to = *from;
    }
}

}  // namespace

std::size_t wireSizeOf(const ovxEndianTable& table) {
    std::size_t size = 0;
    walkFields(table, 0, [&size](std::uint32_t kind, std::size_t) { size += wireWidth(kind); });
    return std::max<std::size_t>(size, 1);
}

std::size_t encodeRecord(const ovxEndianTable& table, const void* record, std::uint8_t* image, std::size_t room) {
    struct Carried {
        const std::uint8_t* bytes;
        std::size_t length;
    };
    boost::container::small_vector<Carried, 4> carried;
    const auto* bytes = static_cast<const std::uint8_t*>(record);
    std::size_t at = 0;
    std::uint32_t carriedLength = 0;
    walkFields(table, 0, [&](std::uint32_t kind, std::size_t offset) {
        const std::size_t end = at + wireWidth(kind);
        if (kind == ovxEndianKindCarriedBytes) {
            const auto* const data = loadWord<const std::uint8_t*>(bytes + offset);
            if (data != nullptr) {
                carried.push_back({data, carriedLength});
            }
            if (end <= room) {
                storeWord(image + at, std::uint32_t{0});
            }
        } else {
            if (kind == ovxEndianKind32) {
                carriedLength = loadWord<std::uint32_t>(bytes + offset);
            }
            if (end <= room) {
                convertScalar(kind, bytes + offset, image + at);
            }
        }
        at = end;
    });
    if (at == 0) {
        if (room != 0) {
            image[0] = 0;
        }
        at = 1;
    }
    for (const Carried& each : carried) {
        const std::size_t end = at + each.length;
        if (end <= room && each.length != 0) {
            std::memcpy(image + at, each.bytes, each.length);
        }
        at = end;
    }
    return at;
}

std::vector<std::uint8_t> encodeRecord(const ovxEndianTable& table, const void* record) {
    constexpr std::size_t kUsual = 256;
    std::vector<std::uint8_t> image(kUsual);
    image.resize(encodeRecord(table, record, image.data(), image.size()));
    if (image.size() > kUsual) {
        encodeRecord(table, record, image.data(), image.size());
    }
    return image;
}

/// Decodes an image in one pass: scalars into the record; carried bytes stay in the image or go to one buffer behind
/// each other.
class RecordDecoder {
public:
    /// `newWritable` is null, or the image, with a byte more.
    RecordDecoder(const ovxEndianTable& table, const std::uint8_t* newImage, std::uint8_t* newWritable,
                  std::size_t newLength, std::size_t fixedSize, DecodedRecord& newTarget)
        : image(newImage), writable(newWritable), length(newLength), carriedAt(fixedSize), target(newTarget) {
        target.bytes.assign(table.recordSize, 0);
    }

    void field(std::uint32_t kind, std::size_t offset) {
        std::uint8_t* to = target.bytes.data() + offset;
        if (kind == ovxEndianKindCarriedBytes) {
            carriedBytes(to);
        } else {
            convertScalar(kind, image + at, to);
            if (kind == ovxEndianKind32) {
                carriedLength = loadWord<std::uint32_t>(to);
            }
        }
        at += wireWidth(kind);
    }

    std::size_t end() const { return carriedAt; }
    const std::string& error() const { return problem; }

private:
    // The word before a carrier's pointer is its length. Compare it with the rest of the image before you use it.
    void carriedBytes(std::uint8_t* pointerField) {
        if (!problem.empty()) {
            return;
        }
        if (carriedLength > length - carriedAt) {
            problem = "carrier at offset " + std::to_string(at - 4) + " names " + std::to_string(carriedLength) +
                      " bytes, " + std::to_string(length - carriedAt) + " are left";
            return;
        }
        const std::size_t end = carriedAt + carriedLength;
        if (writable != nullptr && end == length) {
            writable[end] = 0;
            storeWord(pointerField, writable + carriedAt);
        } else {
            storeWord(pointerField, copied());
        }
        carriedAt = end;
    }

    char* copied() {
        if (copyAt == nullptr) {
            reserve();
        }
        char* const copy = copyAt;
        std::memcpy(copy, image + carriedAt, carriedLength);
        copy[carriedLength] = '\0';
        copyAt += carriedLength + 1;
        return copy;
    }

    /// A carrier takes more bytes on the wire than its zero takes here. One long message does not keep its memory.
    void reserve() {
        constexpr std::size_t kMostKept = std::size_t{64} << 10U;
        if (target.carriedRoom < length || target.carriedRoom > kMostKept) {
            target.carried = std::unique_ptr<char[]>(new char[length]);
            target.carriedRoom = length;
        }
        copyAt = target.carried.get();
    }

    const std::uint8_t* image;
    std::uint8_t* writable;
    std::size_t length;
    std::size_t at = 0;
    std::size_t carriedAt;
    std::uint32_t carriedLength = 0;
    DecodedRecord& target;
    char* copyAt = nullptr;
    std::string problem;
};

namespace {

bool decode(const ovxEndianTable& table, RecordDecoder& decoder, std::size_t fixedSize, std::size_t length,
            std::string& error) {
    if (length < fixedSize) {
        error = "record of " + std::to_string(length) + " bytes, " + std::to_string(fixedSize) + " expected";
        return false;
    }
    walkFields(table, 0, [&decoder](std::uint32_t kind, std::size_t offset) { decoder.field(kind, offset); });
    if (!decoder.error().empty()) {
        error = decoder.error();
    } else if (decoder.end() != length) {
        error = std::to_string(length - decoder.end()) + " bytes behind the record's end";
    } else {
        error.clear();
        return true;
    }
    return false;
}

}  // namespace

bool decodeRecord(const ovxEndianTable& table, const std::uint8_t* image, std::size_t length, DecodedRecord& decoded,
                  std::string& error) {
    const std::size_t fixedSize = wireSizeOf(table);
    RecordDecoder decoder(table, image, nullptr, length, fixedSize, decoded);
    return decode(table, decoder, fixedSize, length, error);
}

bool decodeRecordInPlace(const ovxEndianTable& table, std::size_t wireSize, std::uint8_t* image, std::size_t length,
                         DecodedRecord& decoded, std::string& error) {
    RecordDecoder decoder(table, image, image, length, wireSize, decoded);
    return decode(table, decoder, wireSize, length, error);
}

}  // namespace platform_common
