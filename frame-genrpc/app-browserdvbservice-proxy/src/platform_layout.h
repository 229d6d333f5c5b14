// Compile-time checks of the platform's types on which the library's records and tables depend. Without them a platform
// with another layout would silently read wrong bytes from a record.
// Pointers have the machine's width here: a carrier takes 8 bytes on a 32-bit machine and 12 on a 64-bit machine.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "frame/endian_table.h"

namespace lo::browserdvbservice::platform_layout {

// The three carriers. A macro, because their members have different names.
#define CHECK_CARRIER(Carrier, length)                                                                  \
    static_assert(std::is_same_v<decltype(Carrier::length), std::uint32_t>,                             \
                  "frame/endian_table.h: " #Carrier "::" #length " has to be a std::uint32_t");         \
    static_assert(offsetof(Carrier, length) == 0,                                                       \
                  "frame/endian_table.h: " #Carrier "::" #length " has to be the first member");        \
    static_assert(std::is_pointer_v<decltype(Carrier::data)> && offsetof(Carrier, data) == 4,           \
                  "frame/endian_table.h: " #Carrier "::data has to be a pointer at offset 4 (packed)"); \
    static_assert(sizeof(Carrier) == 4 + sizeof(void*) && std::is_trivially_copyable_v<Carrier>,        \
                  "frame/endian_table.h: " #Carrier " has to be packed and to hold nothing but " #length " and data")
CHECK_CARRIER(_ovxDeserString_struct, length);
CHECK_CARRIER(_ovxDeserBlobUint8_struct, count);
CHECK_CARRIER(_ovxDeserVectorU8_struct, count);
#undef CHECK_CARRIER

static_assert(ovxEndianKind8 == 1 && ovxEndianKind16 == 2 && ovxEndianKindNested == 3 && ovxEndianKind32 == 4 &&
                  ovxEndianKind64 == 8,
              "frame/endian_table.h: the kinds have to be 1, 2, 4 and 8 by width, and 3 for a nested record");

// A 32-bit word followed by a pointer-sized member. A 64-bit machine has padding between the two.
constexpr std::size_t kWordAndPointer = 2 * sizeof(void*);
static_assert(sizeof(ovxEndianEntry) == kWordAndPointer && alignof(ovxEndianEntry) == alignof(void*) &&
                  std::is_standard_layout_v<ovxEndianEntry>,
              "frame/endian_table.h: ovxEndianEntry has to be a 32-bit word and a pointer");
static_assert(std::is_constructible_v<ovxEndianEntry, std::uint32_t, std::uint32_t, const ovxEndianTable*> &&
                  std::is_default_constructible_v<ovxEndianEntry>,
              "frame/endian_table.h: ovxEndianEntry has to be constructible from (kind, offset, table) and by default");
static_assert(sizeof(ovxEndianTable) == kWordAndPointer && alignof(ovxEndianTable) == alignof(void*) &&
                  std::is_standard_layout_v<ovxEndianTable> && std::is_aggregate_v<ovxEndianTable>,
              "frame/endian_table.h: ovxEndianTable has to be a 32-bit size and a pointer to entries");

}  // namespace lo::browserdvbservice::platform_layout
