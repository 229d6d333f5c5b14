// Compares the records with the hand-typed interface: identifiers, sizes, offsets, kinds, the exported tables.
#include <gtest/gtest.h>

#include <set>

#include "endian_entries.h"
#include "layout.h"
#include "message_counts.h"
#include "message_transfer.h"
#include "platform_common/record_image.h"

using namespace lo::browserdvbservice;

// Checks sizes and offsets in memory at compile time on 32-bit machines; those of the wire on all machines.
#define EXPECTED_COMMAND(operation, Message, decimal, hexadecimal, size, text)                        \
    static_assert(!layout::kNarrow || sizeof(browserdvbserviceMsg##Message##_t) == (size), #Message); \
    static_assert(layout::matches(table_##Message::kEntries, text, size), #Message);                  \
    static_assert((decimal) == (hexadecimal), #Message);
#define EXPECTED_EVENT(operation, Message, decimal, hexadecimal, size, text) \
    EXPECTED_COMMAND(operation, Message, decimal, hexadecimal, size, text)
#define EXPECTED_NESTED(Record, size, text)                                           \
    static_assert(!layout::kNarrow || sizeof(_##Record##_struct) == (size), #Record); \
    static_assert(layout::matches(table_##Record::kEntries, text, size), #Record);
#include "expected_messages.inc"

namespace {

struct Expected {
    const char* operation;
    std::uint32_t id;
    std::uint32_t size;
    const char* text;
    const ovxEndianTable* table;
    frame::MsgMeta header;
    const char* name;
    std::size_t recordSize;
};

#define EXPECTED_COMMAND(operation, Message, decimal, hexadecimal, size, text) \
    {#operation,                                                               \
     decimal,                                                                  \
     size,                                                                     \
     text,                                                                     \
     &__ovx_EndianTable_browserdvbserviceMsg##Message##_t,                     \
     messages::Message::header(),                                              \
     messages::Message::kName,                                                 \
     sizeof(browserdvbserviceMsg##Message##_t)},
const Expected kExpectedCommands[] = {
#include "expected_messages.inc"
};

#define EXPECTED_EVENT(operation, Message, decimal, hexadecimal, size, text) \
    {#operation,                                                             \
     decimal,                                                                \
     size,                                                                   \
     text,                                                                   \
     &__ovx_EndianTable_browserdvbserviceMsg##Message##_t,                   \
     messages::Message::header(),                                            \
     messages::Message::kName,                                               \
     sizeof(browserdvbserviceMsg##Message##_t)},
const Expected kExpectedEvents[] = {
#include "expected_messages.inc"
};

void expectTable(const Expected& expected) {
    SCOPED_TRACE(expected.operation);
    EXPECT_TRUE(layout::matches(expected.table->entries, expected.text, expected.size));
    EXPECT_EQ(expected.table->recordSize, expected.recordSize);
    EXPECT_EQ(platform_common::wireSizeOf(*expected.table), expected.size);
}

}  // namespace

TEST(TheInterface, HasTheAgreedMessagesAndNoOthers) {
    EXPECT_EQ(std::size(kExpectedCommands), kCommands);
    EXPECT_EQ(std::size(kExpectedEvents), kEvents);
}

TEST(TheInterface, NumbersMessagesInTheirOrderWithoutGaps) {
    constexpr std::uint32_t kIdentifiers[] = {
#define EXPECTED_COMMAND(operation, Message, decimal, hexadecimal, size, text) decimal,
#define EXPECTED_EVENT(operation, Message, decimal, hexadecimal, size, text) decimal,
#include "expected_messages.inc"
    };
    std::uint32_t next = 677843510;
    for (const std::uint32_t identifier : kIdentifiers) {
        EXPECT_EQ(identifier, next++);
    }
}

TEST(TheInterface, HeadsEveryCommandWithItsIdentifiersAndDirectionZero) {
    for (const Expected& command : kExpectedCommands) {
        SCOPED_TRACE(command.operation);
        EXPECT_STREQ(command.name, command.operation);
        EXPECT_EQ(command.header.firstWord, -1);
        EXPECT_EQ(command.header.interfaceId, 483227507U);
        EXPECT_EQ(command.header.messageId, command.id);
        EXPECT_EQ(command.header.direction, 0);
    }
}

TEST(TheInterface, HeadsEveryEventWithItsIdentifiersAndDirectionOne) {
    for (const Expected& event : kExpectedEvents) {
        SCOPED_TRACE(event.operation);
        EXPECT_STREQ(event.name, event.operation);
        EXPECT_EQ(event.header.firstWord, -1);
        EXPECT_EQ(event.header.interfaceId, 483227508U);
        EXPECT_EQ(event.header.messageId, event.id);
        EXPECT_EQ(event.header.direction, 1);
    }
}

TEST(AnExportedTable, DescribesEveryCommandAsAgreed) {
    for (const Expected& command : kExpectedCommands) {
        expectTable(command);
    }
}

TEST(AnExportedTable, DescribesEveryEventAsAgreed) {
    for (const Expected& event : kExpectedEvents) {
        expectTable(event);
    }
}

TEST(AnExportedTable, DescribesEveryNestedRecordAsAgreed) {
#define EXPECTED_NESTED(Record, size, text)                                                               \
    EXPECT_TRUE(layout::matches(__ovx_EndianTable_serializable_##Record.entries, text, size)) << #Record; \
    EXPECT_EQ(__ovx_EndianTable_serializable_##Record.recordSize, sizeof(_##Record##_struct)) << #Record; \
    EXPECT_EQ(platform_common::wireSizeOf(__ovx_EndianTable_serializable_##Record), std::size_t{size}) << #Record;
#include "expected_messages.inc"
}

TEST(AnExportedTable, PacksKindAndOffsetIntoOneWord) {
    const ovxEndianEntry* entry = __ovx_EndianTable_browserdvbserviceMsgOnTimelineInfoChange_t.entries;
    EXPECT_EQ(entry[0].kindAndOffset, 0x00010000U);
    EXPECT_EQ(entry[1].kindAndOffset, 0x00010001U);
    EXPECT_EQ(entry[2].kindAndOffset, 0x00010002U);
    EXPECT_EQ(entry[3].kindAndOffset, 0x00040003U);
    EXPECT_EQ(entry[4].kindAndOffset, 0x00080007U);
    EXPECT_EQ(entry[5].kindAndOffset, 0x0008000FU);
    EXPECT_EQ(entry[5].nested, nullptr);
    EXPECT_EQ(entry[6].kindAndOffset, 0U);
    EXPECT_EQ(entry[6].mark, 0xFFFFFFFFU);
}

TEST(AnExportedTable, HasSizeOneForARecordWithoutFields) {
    EXPECT_EQ(__ovx_EndianTable_browserdvbserviceMsgCmdSendPMTCache_t.recordSize, 1U);
    EXPECT_TRUE(__ovx_EndianTable_browserdvbserviceMsgCmdSendPMTCache_t.entries->isEnd());
}
