// Messages that are read by the catalogue alone, compared with what the platform writes of their records.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "distinct_values.h"
#include "message_layout.h"
#include "message_transfer.h"
#include "platform_common/record_image.h"

using namespace message_fields;
using lo::browserdvbservice::ClientInterface;
using lo::browserdvbservice::ServiceInterface;

namespace {

/// Values of a message, and its image as the platform sends it.
template <typename Message>
struct Sent {
    template <typename Operation>
    explicit Sent(Operation operation) {
        const auto values = distinct.valuesFor(operation);
        std::apply(
            [this](const auto&... each) {
                const lo::browserdvbservice::OutgoingRecord<Message> record(each...);
                const auto bytes = platform_common::encodeRecord(*Message::table(), record.bytes());
                image.assign(bytes.begin(), bytes.end());
            },
            values);
    }
    DistinctValues distinct;
    std::string image;
};

template <typename Message, typename Operation>
void expectReadAsSent(std::uint32_t identifier, Operation operation) {
    const Sent<Message> sent(operation);
    std::vector<FieldValue> values;
    std::string error;
    ASSERT_NE(findMessage(identifier), nullptr);
    ASSERT_TRUE(readImage(*findMessage(identifier), sent.image, values, error)) << error;
    std::vector<Value> read;
    for (const FieldValue& value : values) {
        read.push_back(value.value);
    }
    EXPECT_EQ(read, sent.distinct.noted);
}

/// What is wrong with the image of cmdFilterOpen.
std::string problemOf(const std::string& image) {
    std::vector<FieldValue> values;
    std::string error;
    const Message& message = *findMessage(lo::browserdvbservice::messages::CmdFilterOpen::header().messageId);
    EXPECT_FALSE(readImage(message, image, values, error));
    return error;
}

}  // namespace

#define COMMAND(identifier, operation, Message, fields)                                                       \
    TEST(TheImageOfAMessage, IsReadByTheCatalogueAlone_##Message) {                                           \
        SCOPED_TRACE(#operation);                                                                             \
        expectReadAsSent<lo::browserdvbservice::messages::Message>(identifier, &ServiceInterface::operation); \
    }
#define EVENT(identifier, operation, Message, decoder, fields)                                               \
    TEST(TheImageOfAMessage, IsReadByTheCatalogueAlone_##Message) {                                          \
        SCOPED_TRACE(#operation);                                                                            \
        expectReadAsSent<lo::browserdvbservice::messages::Message>(identifier, &ClientInterface::operation); \
    }
#include "browserdvbservice_messages.inc"

TEST(TheImageOfAMessage, HasTheFieldsOfANestedRecordInItsPlace) {
    std::string names;
    for (const Place& place : layoutOf(*findMessage(0x28671243))) {
        names += place.field->name + (" " + std::to_string(place.offset)) + (place.isCarrier ? " carrier, " : ", ");
    }
    EXPECT_EQ(names, "filter_session 0 carrier, pid 8, match 12 carrier, mask 20 carrier, ");
}

TEST(TheImageOfAMessage, IsRefusedByItsFirstWrongLength) {
    using Message = lo::browserdvbservice::messages::CmdFilterOpen;
    const std::string image = Sent<Message>(&ServiceInterface::cmdFilterOpen).image;
    EXPECT_EQ(problemOf(image.substr(0, 27)), "message of 27 bytes, 28 expected");
    EXPECT_EQ(problemOf(image + "x"), "1 bytes behind the message's end");
    std::string wrong = image;
    wrong[0] = '\x7F';
    EXPECT_EQ(problemOf(wrong), "filter_session at offset 0 names 2130706440 bytes, 29 are left");
    for (std::size_t length = 0; length < image.size(); ++length) {
        EXPECT_NE(problemOf(image.substr(0, length)), "");
    }
}

TEST(TheImageOfAMessage, IsUnknownForAnIdentifierThatIsNone) {
    EXPECT_EQ(findMessage(0), nullptr) << "nested records have none";
    EXPECT_EQ(findMessage(0x28671235), nullptr);
}
