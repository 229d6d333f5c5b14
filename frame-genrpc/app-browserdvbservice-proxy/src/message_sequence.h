// Walks over the field sequences of the message catalogue: each FIELDS_… macro turns (type, name)(type, name)… into one
// shape, and an empty sequence into nothing. A walk is a pair of macros that hand on to each other; the one that is
// left at the end of the sequence is turned into its empty _END form.
#pragma once

#define FIELDS_WALK(...) FIELDS_WALKED(__VA_ARGS__)
#define FIELDS_WALKED(...) __VA_ARGS__##_END

/// Members of a packed record.
#define FIELDS_STORED(fields) FIELDS_WALK(STORED_A fields)
#define STORED_A(type, name) \
    wire::type::Stored name; \
    STORED_B
#define STORED_B(type, name) \
    wire::type::Stored name; \
    STORED_A
#define STORED_A_END
#define STORED_B_END

/// Members of a nested record's in-memory form.
#define FIELDS_MEMORY(fields) FIELDS_WALK(MEMORY_A fields)
#define MEMORY_A(type, name)   \
    wire::type::Memory name{}; \
    MEMORY_B
#define MEMORY_B(type, name)   \
    wire::type::Memory name{}; \
    MEMORY_A
#define MEMORY_A_END
#define MEMORY_B_END

/// Parameters with their names, each after a comma.
#define FIELDS_PARAMETERS(fields) FIELDS_WALK(PARAMETER_A fields)
#define PARAMETER_A(type, name) , ::lo::browserdvbservice::wire::type::Parameter name PARAMETER_B
#define PARAMETER_B(type, name) , ::lo::browserdvbservice::wire::type::Parameter name PARAMETER_A
#define PARAMETER_A_END
#define PARAMETER_B_END

/// Parameters without names, each after a comma.
#define FIELDS_PARAMETER_TYPES(fields) FIELDS_WALK(PARAMETER_TYPE_A fields)
#define PARAMETER_TYPE_A(type, name) , ::lo::browserdvbservice::wire::type::Parameter PARAMETER_TYPE_B
#define PARAMETER_TYPE_B(type, name) , ::lo::browserdvbservice::wire::type::Parameter PARAMETER_TYPE_A
#define PARAMETER_TYPE_A_END
#define PARAMETER_TYPE_B_END

/// The names alone, each after a comma.
#define FIELDS_ARGUMENTS(fields) FIELDS_WALK(ARGUMENT_A fields)
#define ARGUMENT_A(type, name) , name ARGUMENT_B
#define ARGUMENT_B(type, name) , name ARGUMENT_A
#define ARGUMENT_A_END
#define ARGUMENT_B_END

/// The fields of `record`, read, each after a comma.
#define FIELDS_LOADED(fields) FIELDS_WALK(LOADED_A fields)
#define LOADED_A(type, name) , wire::type::load(record.name) LOADED_B
#define LOADED_B(type, name) , wire::type::load(record.name) LOADED_A
#define LOADED_A_END
#define LOADED_B_END

/// Statements that fill `record` from parameters.
#define FIELDS_STORE(fields) FIELDS_WALK(STORE_A fields)
#define STORE_A(type, name)                \
    record.name = wire::type::store(name); \
    STORE_B
#define STORE_B(type, name)                \
    record.name = wire::type::store(name); \
    STORE_A
#define STORE_A_END
#define STORE_B_END

/// Statements that free what `record` holds on the heap.
#define FIELDS_RELEASE(fields) FIELDS_WALK(RELEASE_A fields)
#define RELEASE_A(type, name)         \
    wire::type::release(record.name); \
    RELEASE_B
#define RELEASE_B(type, name)         \
    wire::type::release(record.name); \
    RELEASE_A
#define RELEASE_A_END
#define RELEASE_B_END

/// Statements between a nested record's conversion structure (this) and its in-memory form (`value`).
#define FIELDS_FROM_MEMORY(fields) FIELDS_WALK(FROM_MEMORY_A fields)
#define FROM_MEMORY_A(type, name)         \
    name = wire::type::store(value.name); \
    FROM_MEMORY_B
#define FROM_MEMORY_B(type, name)         \
    name = wire::type::store(value.name); \
    FROM_MEMORY_A
#define FROM_MEMORY_A_END
#define FROM_MEMORY_B_END

#define FIELDS_TO_MEMORY(fields) FIELDS_WALK(TO_MEMORY_A fields)
#define TO_MEMORY_A(type, name)          \
    value.name = wire::type::load(name); \
    TO_MEMORY_B
#define TO_MEMORY_B(type, name)          \
    value.name = wire::type::load(name); \
    TO_MEMORY_A
#define TO_MEMORY_A_END
#define TO_MEMORY_B_END

/// Entries of a byte-order table for a packed record of the type `Described`.
#define FIELDS_ENTRIES(fields) FIELDS_WALK(ENTRY_A fields)
#define ENTRY_A(type, name) {wire::type::kKind, offsetof(Described, name), wire::type::table()}, ENTRY_B
#define ENTRY_B(type, name) {wire::type::kKind, offsetof(Described, name), wire::type::table()}, ENTRY_A
#define ENTRY_A_END
#define ENTRY_B_END

/// Width of the fields, summed: what a packed record's size must come to.
#define FIELDS_WIDTH(fields) (std::size_t{0} FIELDS_WALK(WIDTH_A fields))
#define WIDTH_A(type, name) +sizeof(wire::type::Stored) WIDTH_B
#define WIDTH_B(type, name) +sizeof(wire::type::Stored) WIDTH_A
#define WIDTH_A_END
#define WIDTH_B_END
