// The packed records of the RPC interface: enumerations, nested records with their conversion structures, and one
// record for each message. On a 32-bit machine a record in memory has the same offsets as on the wire; on a 64-bit
// machine its carriers are wider.
// Never take a reference to a scalar member of a record: its address may be unaligned.
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

/// The conversion steps that are the same for every nested record.
struct NestedRecords {
    template <typename Structure>
    static void clear(Structure& structure) {
        std::memset(static_cast<void*>(&structure), 0, sizeof structure);
    }
    template <typename Structure>
    static void release(Structure& structure) {
        Structure::releaseFields(structure);
        clear(structure);
    }
    template <typename Structure, typename Record>
    static void store(Structure& structure, const Record& value) {
        try {
            Structure::storeFields(structure, value);
        } catch (...) {
            release(structure);
            throw;
        }
    }
    template <typename Structure, typename Record>
    static Structure& assign(Structure& structure, const Record& value) {
        release(structure);
        store(structure, value);
        return structure;
    }
    template <typename Record, typename Structure>
    static Record load(const Structure& structure) {
        Record value;
        Structure::loadFields(structure, value);
        return value;
    }
};

// A nested record in memory, and its conversion structure. The structure is plain packed data without a destructor:
// after filling it, call release(). A new assignment frees the old contents. A fill that fails half-way frees what it
// had allocated.
#define NESTED(Record, fields)                                                                                  \
    struct Record {                                                                                             \
        FIELDS_MEMORY(fields)                                                                                   \
    };                                                                                                          \
    struct __attribute__((packed)) _##Record##_struct {                                                         \
        FIELDS_STORED(fields)                                                                                   \
        _##Record##_struct() { NestedRecords::clear(*this); }                                                   \
        explicit _##Record##_struct(const Record& value) : _##Record##_struct() {                               \
            NestedRecords::store(*this, value);                                                                 \
        }                                                                                                       \
        _##Record##_struct(const _##Record##_struct&) = default;                                                \
        _##Record##_struct& operator=(const _##Record##_struct&) = default;                                     \
        _##Record##_struct& operator=(const Record& value) { return NestedRecords::assign(*this, value); }      \
        operator Record() const { return NestedRecords::load<Record>(*this); }                                  \
        void release() { NestedRecords::release(*this); }                                                       \
                                                                                                                \
    private:                                                                                                    \
        friend NestedRecords;                                                                                   \
        static void storeFields(_##Record##_struct& record, const Record& value) { FIELDS_FROM_MEMORY(fields) } \
        static void loadFields(const _##Record##_struct& record, Record& value) { FIELDS_TO_MEMORY(fields) }    \
        static void releaseFields(_##Record##_struct& record) { FIELDS_RELEASE(fields) }                        \
    };
#include "browserdvbservice_messages.inc"

}  // namespace lo::browserdvbservice

// The byte-order tables, one for each record. The library exports them under exactly these names.
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
