// Byte-order tables: the description of a packed record by which the framework converts it between host and wire byte
// order, and the carriers by which a record holds bytes of variable length. A table is constant data; the framework
// only reads it.
#pragma once

#include <cstdint>

#include "frame/api.h"

struct ovxEndianTable;

/// Kinds of a record's fields. The values 1, 2, 4 and 8 are also the field's width in bytes.
enum ovxEndianKind : std::uint32_t {
    ovxEndianKind8 = 1,
    ovxEndianKind16 = 2,
    ovxEndianKindNested = 3,  ///< a nested record, described by the entry's own table
    ovxEndianKind32 = 4,
    ovxEndianKind64 = 8,
    /// Only inside the platform's own carrier tables: the pointer word of a carrier. On the wire it is 32 bits of zero.
    ovxEndianKindCarriedBytes = 16,
};

/// One field of a record; on a 32-bit machine 8 bytes. Entries stand in ascending order of offset, and the list ends
/// with a first word of 0 and a second word of all ones in its low 32 bits.
struct ovxEndianEntry {
    std::uint32_t kindAndOffset;  ///< low 16 bits: offset in the record; high 16 bits: ovxEndianKind
    union {
        const ovxEndianTable* nested;  ///< for ovxEndianKindNested, else null
        std::uintptr_t mark;           ///< 0xFFFFFFFF in the end entry
    };

    constexpr ovxEndianEntry(std::uint32_t kind, std::uint32_t offset, const ovxEndianTable* table = nullptr)
        : kindAndOffset((kind << 16U) | offset), nested(table) {}
    constexpr ovxEndianEntry() : kindAndOffset(0), mark(0xFFFFFFFFU) {}

    constexpr std::uint32_t kind() const { return kindAndOffset >> 16U; }
    constexpr std::uint32_t offset() const { return kindAndOffset & 0xFFFFU; }
    constexpr bool isEnd() const { return kindAndOffset == 0; }
};

/// Head of a table; on a 32-bit machine 8 bytes.
struct ovxEndianTable {
    std::uint32_t recordSize;       ///< bytes of the record in memory; 1 for a record without fields
    const ovxEndianEntry* entries;  ///< the fields, closed by an end entry
};

// Carriers: what a record holds for bytes of variable length. The sender allocates the bytes with malloc and frees them
// after the send has returned; the framework copies what it needs before it returns. On the receiving side the
// framework owns the bytes and keeps them until the message handler has returned.

/// Text: `length` bytes without the terminator; `data` has length + 1 bytes, the last one zero.
struct __attribute__((packed)) _ovxDeserString_struct {
    std::uint32_t length;
    char* data;
};

/// Bytes: `count` bytes, or count 0 and a null pointer.
struct __attribute__((packed)) _ovxDeserBlobUint8_struct {
    std::uint32_t count;
    std::uint8_t* data;
};

/// A byte vector; the same shape as a blob with a table of its own.
struct __attribute__((packed)) _ovxDeserVectorU8_struct {
    std::uint32_t count;
    std::uint8_t* data;
};

extern "C" {
/// The platform's tables for the three carriers. Records that hold a carrier name them in a nested entry.
extern DTV_PLATFORM_API const ovxEndianTable __ovx_EndianTable_ovxDeserString_t;
extern DTV_PLATFORM_API const ovxEndianTable __ovx_EndianTable_ovxDeserBlobUint8_t;
extern DTV_PLATFORM_API const ovxEndianTable __ovx_EndianTable_ovxDeserVectorU8_t;
}
