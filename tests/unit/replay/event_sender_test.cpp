// Recorded events, sent again.
#include "event_sender.h"

#include <gtest/gtest.h>

#include "distinct_values.h"
#include "message_image.h"
#include "message_layout.h"
#include "recording_client.h"

namespace {

/// The values of an event's image.
template <typename... Values>
std::vector<message_fields::Value> valuesIn(std::uint32_t identifier, const Values&... values) {
    std::vector<message_fields::FieldValue> fields;
    std::string error;
    EXPECT_TRUE(message_fields::readImage(*message_fields::findMessage(identifier),
                                          dtvservice::MessageImage::of(values...), fields, error));
    std::vector<message_fields::Value> read;
    for (const message_fields::FieldValue& field : fields) {
        read.push_back(field.value);
    }
    return read;
}

/// Calls the operation of one client, and sends the event of the same values to the browsers.
template <typename Operation>
void sendTwice(std::uint32_t identifier, Operation operation, RecordingClient& direct, dtvservice::Browsers& browsers) {
    DistinctValues distinct;
    std::apply(
        [&](const auto&... values) {
            frame::MsgIds ids;
            (static_cast<dtvservice::Events&>(direct).*operation)(ids, frame::TransportInfo(), values...);
            dtvservice::sendEvent(browsers, 3, *message_fields::findMessage(identifier),
                                  valuesIn(identifier, values...));
        },
        distinct.valuesFor(operation));
}

}  // namespace

TEST(ARecordedEvent, IsSentWithTheValuesOfItsImage) {
    dtvservice::BusTap tap;
    RecordingClient direct;
    RecordingClient client;
    dtvservice::Browsers browsers(tap);
    browsers.connect(client);
#define EVENT(identifier, operation, Message, decoder, fields) \
    sendTwice(identifier, &dtvservice::Events::operation, direct, browsers);
#include "browserdvbservice_messages.inc"
    EXPECT_EQ(client.texts().size(), 32U);
    EXPECT_EQ(client.texts(), direct.texts());
}
