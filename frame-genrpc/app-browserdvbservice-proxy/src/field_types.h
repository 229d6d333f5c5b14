// Field types of the message catalogue. Each defines the type of an operation's parameter, its form in a packed record,
// its kind in a byte-order table, and the conversion between the two forms.
// Ownership: store() allocates a carrier's bytes with malloc, release() frees them; load() copies and frees nothing.
// Fails:     store() throws std::bad_alloc when there is no memory.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "frame/endian_table.h"
#include "platform_layout.h"

namespace lo::browserdvbservice::wire {

template <typename Value, typename Word, std::uint32_t Kind>
struct Scalar {
    using Parameter = Value;
    using Memory = Value;
    using Stored = Word;
    static constexpr std::uint32_t kKind = Kind;
    static constexpr const ovxEndianTable* table() { return nullptr; }

    static Stored store(Value value) { return static_cast<Stored>(value); }
    static Value load(Stored stored) { return static_cast<Value>(stored); }
    static void release(Stored) {}
};

using U8 = Scalar<unsigned char, std::uint8_t, ovxEndianKind8>;
using U16 = Scalar<unsigned short, std::uint16_t, ovxEndianKind16>;
using I16 = Scalar<short, std::int16_t, ovxEndianKind16>;
using U32 = Scalar<unsigned int, std::uint32_t, ovxEndianKind32>;
using I32 = Scalar<int, std::int32_t, ovxEndianKind32>;
using U64 = Scalar<unsigned long long, std::uint64_t, ovxEndianKind64>;

template <typename Enumeration>
using Enumerated = Scalar<Enumeration, std::int32_t, ovxEndianKind32>;

/// A malloc'ed copy of `length` bytes, followed by `extra` zero bytes.
inline void* copyToHeap(const void* bytes, std::size_t length, std::size_t extra) {
    void* const copy = std::malloc(length + extra);
    if (copy == nullptr) {
        throw std::bad_alloc();
    }
    if (length != 0) {
        std::memcpy(copy, bytes, length);
    }
    std::memset(static_cast<char*>(copy) + length, 0, extra);
    return copy;
}

struct String {
    using Parameter = const std::string&;
    using Memory = std::string;
    using Stored = _ovxDeserString_struct;
    static constexpr std::uint32_t kKind = ovxEndianKindNested;
    static constexpr const ovxEndianTable* table() { return &__ovx_EndianTable_ovxDeserString_t; }

    static Stored store(const std::string& value) {
        return {static_cast<std::uint32_t>(value.size()),
                static_cast<char*>(copyToHeap(value.data(), value.size(), 1))};
    }
    /// The length word, not a terminator, bounds the copy.
    static std::string load(Stored stored) {
        return stored.data == nullptr ? std::string() : std::string(stored.data, stored.length);
    }
    static void release(Stored stored) { std::free(stored.data); }
};

/// Common to blobs and byte vectors: a count of 0 means a null pointer.
template <typename Carrier>
struct CountedBytes {
    using Stored = Carrier;
    static constexpr std::uint32_t kKind = ovxEndianKindNested;

    static Stored storeBytes(const void* bytes, std::size_t count) {
        if (count == 0) {
            return {0, nullptr};
        }
        return {static_cast<std::uint32_t>(count), static_cast<std::uint8_t*>(copyToHeap(bytes, count, 0))};
    }
    static void release(Stored stored) { std::free(stored.data); }
};

struct Blob : CountedBytes<_ovxDeserBlobUint8_struct> {
    using Parameter = const std::vector<unsigned char>&;
    using Memory = std::vector<unsigned char>;
    static constexpr const ovxEndianTable* table() { return &__ovx_EndianTable_ovxDeserBlobUint8_t; }

    static Stored store(const std::vector<unsigned char>& value) { return storeBytes(value.data(), value.size()); }
    static std::vector<unsigned char> load(Stored stored) {
        return stored.data == nullptr ? std::vector<unsigned char>()
                                      : std::vector<unsigned char>(stored.data, stored.data + stored.count);
    }
};

/// Clients get the carrier itself, valid during the call only.
struct ByteVector : CountedBytes<_ovxDeserVectorU8_struct> {
    using Parameter = const _ovxDeserVectorU8_struct&;
    using Memory = _ovxDeserVectorU8_struct;
    static constexpr const ovxEndianTable* table() { return &__ovx_EndianTable_ovxDeserVectorU8_t; }

    static Stored store(const _ovxDeserVectorU8_struct& value) { return storeBytes(value.data, value.count); }
    static Stored load(Stored stored) { return stored; }
};

}  // namespace lo::browserdvbservice::wire
