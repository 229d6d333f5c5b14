// The packed records of the interface: enumerations, nested records with their conversion structures, and one record a
// message. On a 32-bit machine a record in memory has the wire's offsets; on a 64-bit one its carriers are wider.
// No reference to a scalar member of a record is ever taken: it may stand at an odd address.
#pragma once

#include <cstddef>
#include <cstdint>

#include "field_types.h"
#include "message_sequence.h"

namespace lo::browserdvbservice {

/// Component types as OIPF numbers them (OIPF DAE, clause 7.16.5.2). Other values pass through.
enum ComponentType : std::int32_t { ComponentTypeVideo = 0, ComponentTypeAudio = 1, ComponentTypeSubtitle = 2 };
enum OpappType : std::int32_t { OpappType0 = 0, OpappType1 = 1 };
enum OpappInstallStatus : std::int32_t { OpappInstallStatus0 = 0, OpappInstallStatus1 = 1 };
enum ApplicationStartStatus : std::int32_t { ApplicationStarted = 0, ApplicationStartFailed = 1 };

namespace wire {
using ComponentTypeField = Enumerated<ComponentType>;
using OpappTypeField = Enumerated<OpappType>;
using OpappInstallStatusField = Enumerated<OpappInstallStatus>;
}  // namespace wire

// A nested record in memory, and its conversion structure. The structure is plain packed data and frees nothing by
// itself: whoever filled it calls release(). Assigning again frees what it held, and filling that fails half-way frees
// what it had filled.
#define NESTED(Record, fields)                                                   \
    struct Record {                                                              \
        FIELDS_MEMORY(fields)                                                    \
    };                                                                           \
    struct __attribute__((packed)) _##Record##_struct {                          \
        FIELDS_STORED(fields)                                                    \
        _##Record##_struct() { clear(); }                                        \
        explicit _##Record##_struct(const Record& value) {                       \
            clear();                                                             \
            fill(value);                                                         \
        }                                                                        \
        _##Record##_struct(const _##Record##_struct&) = default;                 \
        _##Record##_struct& operator=(const _##Record##_struct&) = default;      \
        _##Record##_struct& operator=(const Record& value) {                     \
            release();                                                           \
            fill(value);                                                         \
            return *this;                                                        \
        }                                                                        \
        operator Record() const {                                                \
            Record value;                                                        \
            FIELDS_TO_MEMORY(fields)                                             \
            return value;                                                        \
        }                                                                        \
        void release() {                                                         \
            _##Record##_struct& record = *this;                                  \
            FIELDS_RELEASE(fields)                                               \
            clear();                                                             \
        }                                                                        \
                                                                                 \
    private:                                                                     \
        void clear() { std::memset(static_cast<void*>(this), 0, sizeof *this); } \
        void fill(const Record& value) {                                         \
            try {                                                                \
                FIELDS_FROM_MEMORY(fields)                                       \
            } catch (...) {                                                      \
                release();                                                       \
                throw;                                                           \
            }                                                                    \
        }                                                                        \
    };
#include "browserdvbservice_messages.inc"

}  // namespace lo::browserdvbservice

// The byte-order tables, one a record, exported by the library under exactly these names.
extern "C" {
#define NESTED(Record, fields) \
    extern __attribute__((visibility("default"))) const ovxEndianTable __ovx_EndianTable_serializable_##Record;
#define COMMAND(identifier, operation, Message, fields) \
    extern __attribute__((visibility("default")))       \
    const ovxEndianTable __ovx_EndianTable_browserdvbserviceMsg##Message##_t;
#define EVENT(identifier, operation, Message, decoder, fields) COMMAND(identifier, operation, Message, fields)
#include "browserdvbservice_messages.inc"
}

namespace lo::browserdvbservice {

namespace wire {

/// A nested record as a field of a message.
template <typename Record, typename Structure, const ovxEndianTable* Table>
struct NestedField {
    using Parameter = const Record&;
    using Stored = Structure;
    static constexpr std::uint32_t kKind = ovxEndianKindNested;
    static constexpr const ovxEndianTable* table() { return Table; }

    static Stored store(const Record& value) { return Structure(value); }
    static Record load(const Stored& stored) { return stored; }
    static void release(Stored stored) { stored.release(); }
};

using TuneInfoChannelField =
    NestedField<TuneInfoChannel, _TuneInfoChannel_struct, &__ovx_EndianTable_serializable_TuneInfoChannel>;
using TuneInfoComponentField =
    NestedField<TuneInfoComponent, _TuneInfoComponent_struct, &__ovx_EndianTable_serializable_TuneInfoComponent>;
using OpenFilterMatchMaskField = NestedField<OpenFilterMatchMask_t, _OpenFilterMatchMask_t_struct,
                                             &__ovx_EndianTable_serializable_OpenFilterMatchMask_t>;

}  // namespace wire

#define COMMAND(identifier, operation, Message, fields)                \
    struct __attribute__((packed)) browserdvbserviceMsg##Message##_t { \
        FIELDS_STORED(fields)                                          \
    };
#define EVENT(identifier, operation, Message, decoder, fields) COMMAND(identifier, operation, Message, fields)
#include "browserdvbservice_messages.inc"

}  // namespace lo::browserdvbservice
