// The exported byte-order tables: heads over the field lists.
#include "endian_entries.h"

using namespace lo::browserdvbservice;

extern "C" {
#define NESTED(Record, fields)                                                                         \
    const ovxEndianTable __ovx_EndianTable_serializable_##Record = {sizeof(table_##Record::Described), \
                                                                    table_##Record::kEntries};
#define COMMAND(identifier, operation, Message, fields)                                                             \
    const ovxEndianTable __ovx_EndianTable_browserdvbserviceMsg##Message##_t = {sizeof(table_##Message::Described), \
                                                                                table_##Message::kEntries};
#define EVENT(identifier, operation, Message, decoder, fields) COMMAND(identifier, operation, Message, fields)
#include "browserdvbservice_messages.inc"
}
