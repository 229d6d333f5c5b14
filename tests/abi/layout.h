// Compares layouts as text ("0:u32, 4:string") with the entries of a byte-order table, at compile time.
#pragma once

#include <string_view>

#include "browserdvbservice_records.h"

namespace layout {

struct FieldType {
    std::string_view name;
    std::uint32_t kind;
    std::uint32_t wireWidth;
    const ovxEndianTable* nested;
};

inline constexpr FieldType kFieldTypes[] = {
    {"u8", 1, 1, nullptr},
    {"u16", 2, 2, nullptr},
    {"i16", 2, 2, nullptr},
    {"u32", 4, 4, nullptr},
    {"i32", 4, 4, nullptr},
    {"ComponentType", 4, 4, nullptr},
    {"OpappType", 4, 4, nullptr},
    {"OpappInstallStatus", 4, 4, nullptr},
    {"u64", 8, 8, nullptr},
    {"string", 3, 8, &__ovx_EndianTable_ovxDeserString_t},
    {"blob", 3, 8, &__ovx_EndianTable_ovxDeserBlobUint8_t},
    {"byte-vector", 3, 8, &__ovx_EndianTable_ovxDeserVectorU8_t},
    {"TuneInfoChannel", 3, 28, &__ovx_EndianTable_serializable_TuneInfoChannel},
    {"TuneInfoComponent", 3, 12, &__ovx_EndianTable_serializable_TuneInfoComponent},
    {"OpenFilterMatchMask_t", 3, 16, &__ovx_EndianTable_serializable_OpenFilterMatchMask_t},
};

/// By value: a type that does not exist has no name.
constexpr FieldType findType(std::string_view name) {
    for (const FieldType& type : kFieldTypes) {
        if (type.name == name) {
            return type;
        }
    }
    return {{}, 0, 0, nullptr};
}

constexpr std::uint32_t toNumber(std::string_view digits) {
    std::uint32_t number = 0;
    for (const char digit : digits) {
        number = number * 10 + static_cast<std::uint32_t>(digit - '0');
    }
    return number;
}

/// True when records in memory have the same offsets as on the wire.
constexpr bool kNarrow = sizeof(void*) == 4;

/// Compares the text with the entries: kinds, nested tables and offsets must agree, the fields must have no gaps, and
/// both must end at `size`. On a 64-bit machine offsets in memory are larger; the wire's are computed from the types.
constexpr bool matches(const ovxEndianEntry* entry, std::string_view text, std::uint32_t size) {
    std::uint32_t wireOffset = 0;
    while (!text.empty()) {
        const std::size_t comma = text.find(", ");
        const std::string_view field = text.substr(0, comma);
        text.remove_prefix(comma == std::string_view::npos ? text.size() : comma + 2);
        const std::size_t colon = field.find(':');
        const FieldType type = findType(field.substr(colon + 1));
        if (type.name.empty() || entry->isEnd() || toNumber(field.substr(0, colon)) != wireOffset ||
            entry->kind() != type.kind || entry->nested != type.nested || (kNarrow && entry->offset() != wireOffset)) {
            return false;
        }
        wireOffset += type.wireWidth;
        ++entry;
    }
    return entry->isEnd() && entry->mark == 0xFFFFFFFFU && (wireOffset == 0 ? 1 : wireOffset) == size;
}

}  // namespace layout
