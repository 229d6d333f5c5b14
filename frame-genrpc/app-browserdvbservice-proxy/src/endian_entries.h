// The field lists of all byte-order tables, one for each record: entries from the catalogue's fields, offsets from the
// packed records. A static assertion compares each record's size with the summed widths of its fields, so a gap or an
// overlap does not compile.
#pragma once

#include "browserdvbservice_records.h"

namespace lo::browserdvbservice {

#define NESTED(Record, fields)                                                        \
    namespace table_##Record {                                                        \
        using Described = _##Record##_struct;                                         \
        constexpr ovxEndianEntry kEntries[] = {FIELDS_ENTRIES(fields){}};             \
        static_assert(sizeof(Described) == FIELDS_WIDTH(fields), "record is packed"); \
    }
#define COMMAND(identifier, operation, Message, fields)                                            \
    namespace table_##Message {                                                                    \
        using Described [[maybe_unused]] = browserdvbserviceMsg##Message##_t;                      \
        constexpr ovxEndianEntry kEntries[] = {FIELDS_ENTRIES(fields){}};                          \
        static_assert(sizeof(Described) == (FIELDS_WIDTH(fields) == 0 ? 1 : FIELDS_WIDTH(fields)), \
                      "record is packed");                                                         \
    }
#define EVENT(identifier, operation, Message, decoder, fields) COMMAND(identifier, operation, Message, fields)
#include "browserdvbservice_messages.inc"

}  // namespace lo::browserdvbservice
