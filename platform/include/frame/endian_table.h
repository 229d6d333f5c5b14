// Byte-order tables: describe a packed record, so that the framework can convert it between host and wire byte order.
// Carriers: hold the variable-length bytes of a record. Tables are constant; the framework only reads them.
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
    /// Used only in the platform's own carrier tables: the pointer word of a carrier. On the wire it is 32 zero bits.
    ovxEndianKindCarriedBytes = 16,
};

/// One field of a record; 8 bytes on a 32-bit machine. Entries are in ascending order of offset. The end entry has 0 in
/// its first word and all ones in the low 32 bits of its second word.
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

/// Head of a table; 8 bytes on a 32-bit machine.
struct ovxEndianTable {
    std::uint32_t recordSize;       ///< bytes of the record in memory; 1 for a record without fields
    const ovxEndianEntry* entries;  ///< the fields, followed by an end entry
};

// Carriers hold a record's variable-length bytes. The sender allocates the bytes with malloc and frees them after the
// send has returned; the framework copies what it needs before it returns. On the receiving side the framework owns the
// bytes and keeps them until the message handler has returned.

/// Text: `length` bytes without the terminator. `data` holds length + 1 bytes; the last one is zero.
struct __attribute__((packed)) _ovxDeserString_struct {
    std::uint32_t length;
    char* data;
};

/// Bytes: `count` of them, or count 0 and a null pointer.
struct __attribute__((packed)) _ovxDeserBlobUint8_struct {
    std::uint32_t count;
    std::uint8_t* data;
};

/// A byte vector: the same layout as a blob, but a different table.
struct __attribute__((packed)) _ovxDeserVectorU8_struct {
    std::uint32_t count;
    std::uint8_t* data;
};

extern "C" {
/// The platform's tables for the three carriers. A record with a carrier refers to its table in a nested entry.
extern DTV_PLATFORM_API const ovxEndianTable __ovx_EndianTable_ovxDeserString_t;
extern DTV_PLATFORM_API const ovxEndianTable __ovx_EndianTable_ovxDeserBlobUint8_t;
extern DTV_PLATFORM_API const ovxEndianTable __ovx_EndianTable_ovxDeserVectorU8_t;
}
