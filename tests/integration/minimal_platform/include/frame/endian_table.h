// Field descriptions of packed records, and the carriers for bytes of any length.
#pragma once

#include <cstdint>

struct ovxEndianTable;

enum ovxEndianKind : std::uint32_t {
    ovxEndianKind8 = 1,
    ovxEndianKind16 = 2,
    ovxEndianKindNested = 3,
    ovxEndianKind32 = 4,
    ovxEndianKind64 = 8
};

/// The first word has the offset in its low half and the kind in its high half. {0, 0xFFFFFFFF} ends the list.
struct ovxEndianEntry {
    constexpr ovxEndianEntry() : word(0), mark(0xFFFFFFFFU) {}
    constexpr ovxEndianEntry(std::uint32_t kind, std::uint32_t offset, const ovxEndianTable* ofNested = nullptr)
        : word((kind << 16U) | offset), nested(ofNested) {}

    std::uint32_t word;
    union {
        const ovxEndianTable* nested;
        std::uintptr_t mark;
    };
};

struct ovxEndianTable {
    std::uint32_t size;
    const ovxEndianEntry* entries;
};

struct __attribute__((packed)) _ovxDeserString_struct {
    std::uint32_t length;
    char* data;
};
struct __attribute__((packed)) _ovxDeserBlobUint8_struct {
    std::uint32_t count;
    std::uint8_t* data;
};
struct __attribute__((packed)) _ovxDeserVectorU8_struct {
    std::uint32_t count;
    std::uint8_t* data;
};

extern "C" {
extern const ovxEndianTable __ovx_EndianTable_ovxDeserString_t;
extern const ovxEndianTable __ovx_EndianTable_ovxDeserBlobUint8_t;
extern const ovxEndianTable __ovx_EndianTable_ovxDeserVectorU8_t;
}
