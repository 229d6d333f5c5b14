// Macros that expand the field sequences of the message catalogue. FIELDS_EACH(X, fields) puts the macro X in front of
// each field of (type, name)(type, name)…; an empty sequence expands to nothing. The other FIELDS_… macros use it to
// generate the parts of records, tables and interfaces.
#pragma once

// Turns the sequence into a list with a comma before each field. Two macros alternate over the fields. The one that is
// left over at the end becomes its empty _END form.
#define FIELDS_LISTED(...) FIELDS_CLOSED(__VA_ARGS__)
#define FIELDS_CLOSED(...) __VA_ARGS__##_END
#define FIELDS_LIST_A(type, name) , (type, name)FIELDS_LIST_B
#define FIELDS_LIST_B(type, name) , (type, name)FIELDS_LIST_A
#define FIELDS_LIST_A_END
#define FIELDS_LIST_B_END

// One macro for each number of fields: compiler errors then show few expansions between a message and its field.
// For a message of eleven fields add FIELDS_11 here and in FIELDS_COUNTED, and one parameter to FIELDS_CHOICE.
#define FIELDS_0(X)
#define FIELDS_1(X, a) X a
#define FIELDS_2(X, a, b) X a X b
#define FIELDS_3(X, a, b, c) X a X b X c
#define FIELDS_4(X, a, b, c, d) X a X b X c X d
#define FIELDS_5(X, a, b, c, d, e) X a X b X c X d X e
#define FIELDS_6(X, a, b, c, d, e, f) X a X b X c X d X e X f
#define FIELDS_7(X, a, b, c, d, e, f, g) X a X b X c X d X e X f X g
#define FIELDS_8(X, a, b, c, d, e, f, g, h) X a X b X c X d X e X f X g X h
#define FIELDS_9(X, a, b, c, d, e, f, g, h, i) X a X b X c X d X e X f X g X h X i
#define FIELDS_10(X, a, b, c, d, e, f, g, h, i, j) X a X b X c X d X e X f X g X h X i X j

#define FIELDS_EACH(X, fields) FIELDS_COUNTED(X FIELDS_LISTED(FIELDS_LIST_A fields))
#define FIELDS_COUNTED(...)                                                                                     \
    FIELDS_CHOICE(__VA_ARGS__, FIELDS_10, FIELDS_9, FIELDS_8, FIELDS_7, FIELDS_6, FIELDS_5, FIELDS_4, FIELDS_3, \
                  FIELDS_2, FIELDS_1, FIELDS_0, ~)                                                              \
    (__VA_ARGS__)
#define FIELDS_CHOICE(X, a, b, c, d, e, f, g, h, i, j, chosen, ...) chosen

/// Members of a packed record.
#define FIELDS_STORED(fields) FIELDS_EACH(FIELD_STORED, fields)
#define FIELD_STORED(type, name) wire::type::Stored name;

/// Members of a nested record's in-memory form.
#define FIELDS_MEMORY(fields) FIELDS_EACH(FIELD_MEMORY, fields)
#define FIELD_MEMORY(type, name) wire::type::Memory name{};

/// Parameters with their names, each after a comma.
#define FIELDS_PARAMETERS(fields) FIELDS_EACH(FIELD_PARAMETER, fields)
#define FIELD_PARAMETER(type, name) , ::lo::browserdvbservice::wire::type::Parameter name

/// Parameters without names, each after a comma.
#define FIELDS_PARAMETER_TYPES(fields) FIELDS_EACH(FIELD_PARAMETER_TYPE, fields)
#define FIELD_PARAMETER_TYPE(type, name) , ::lo::browserdvbservice::wire::type::Parameter

/// The names alone, each after a comma.
#define FIELDS_ARGUMENTS(fields) FIELDS_EACH(FIELD_ARGUMENT, fields)
#define FIELD_ARGUMENT(type, name) , name

/// The values loaded from the fields of `record`, each after a comma.
#define FIELDS_LOADED(fields) FIELDS_EACH(FIELD_LOADED, fields)
#define FIELD_LOADED(type, name) , wire::type::load(record.name)

/// Statements that fill `record` from parameters.
#define FIELDS_STORE(fields) FIELDS_EACH(FIELD_STORE, fields)
#define FIELD_STORE(type, name) record.name = wire::type::store(name);

/// Statements that free what `record` holds on the heap.
#define FIELDS_RELEASE(fields) FIELDS_EACH(FIELD_RELEASE, fields)
#define FIELD_RELEASE(type, name) wire::type::release(record.name);

/// Statements between a nested record's conversion structure (`record`) and its in-memory form (`value`).
#define FIELDS_FROM_MEMORY(fields) FIELDS_EACH(FIELD_FROM_MEMORY, fields)
#define FIELD_FROM_MEMORY(type, name) record.name = wire::type::store(value.name);
#define FIELDS_TO_MEMORY(fields) FIELDS_EACH(FIELD_TO_MEMORY, fields)
#define FIELD_TO_MEMORY(type, name) value.name = wire::type::load(record.name);

/// Entries of a byte-order table for a packed record of the type `Described`.
#define FIELDS_ENTRIES(fields) FIELDS_EACH(FIELD_ENTRY, fields)
#define FIELD_ENTRY(type, name) {wire::type::kKind, offsetof(Described, name), wire::type::table()},

/// Sum of the field widths. A packed record has exactly this size.
#define FIELDS_WIDTH(fields) (std::size_t{0} FIELDS_EACH(FIELD_WIDTH, fields))
#define FIELD_WIDTH(type, name) +sizeof(wire::type::Stored)
