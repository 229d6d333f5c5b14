// Decoding of every event from wire bytes to the client's call, with extreme numbers and with strings that are empty,
// contain a zero byte or are not text. Typed out, independently of the message catalogue.
#include <algorithm>

#include "hex_bytes.h"
#include "proxy_fixture.h"

namespace messages = lo::browserdvbservice::messages;

namespace {

struct Event {
    std::uint32_t messageId;
    const char* decoder;
    const char* wire;
    const char* call;
};

const Event kEvents[] = {
    {677843539, "callOnAitChannelInfoUpdated", "7FFFFFFF80000001", "onAitChannelInfoUpdated(32767, 65535, 32768, 1)"},
    {677843540, "callOnAitParsingStateChanged", "FFFF", "onAitParsingStateChanged(65535)"},
    {677843541, "callOnAitSectionAvailable", "0000000000000000", "onAitSectionAvailable(0:)"},
    {677843542, "callOnBrowserOpenFilterConf", "000000010000000100000000FFFFFF",
     "onBrowserOpenFilterConf(1, 1:FF, -1)"},
    {677843543, "callOnBrowserOCloseFilterConf", "00000003000000007FFF610062",
     "onBrowserOCloseFilterConf(3:610062, 32767)"},
    {677843544, "callOnAitInfoAvailable", "FFFFFFFF800001FF80010000000000000000000000030000000001610062",
     "onAitInfoAvailable(4294967295, 32768, 1, 255, 128, 1, 0:, 3:610062, 1)"},
    {677843545, "callOnAitBoundaryExtensionAvailable", "8000000000010000000300000000610062",
     "onAitBoundaryExtensionAvailable(2147483648, 1, 3:610062)"},
    {677843546, "callOnDsmccMounted", "00000001FFFF80000001800080000000000100000000FF",
     "onDsmccMounted(1, 65535, 32768, 1, -32768, 32768, 1:FF)"},
    {677843547, "callOnStreamEventListenerAdded", "00000001FFFF80000001800000000001000000000000000000000000FFFFFFFFFF",
     "onStreamEventListenerAdded(1, 65535, 32768, 1, -32768, 1:FF, 0:, 4294967295)"},
    {677843548, "callOnStreamEventListenerRemoved",
     "800000000001FFFF80007FFF0000000300000000000000010000000000000001610062FF",
     "onStreamEventListenerRemoved(2147483648, 1, 65535, 32768, 32767, 3:610062, 1:FF, 1)"},
    {677843549, "callOnStreamEventListenerSignalled",
     "FFFF800000018000000000000000000000000003000000000000000100000000610062FF",
     "onStreamEventListenerSignalled(65535, 32768, 1, -32768, 0:, 3:610062, 1:FF)"},
    {677843550, "callOnVodMaxdomeSecureSerialNumber", "0000000000000000", "onVodMaxdomeSecureSerialNumber(0:)"},
    {677843551, "callOnFilterOpened", "00000001000000000000000000000000FF", "onFilterOpened(1:FF, 0:)"},
    {677843552, "callOnFilterClosed", "0000000100000000FF", "onFilterClosed(1:FF)"},
    {677843553, "callOnFilterSectionDataArrived", "0000000100000000000000000000000080000000FF",
     "onFilterSectionDataArrived(1:FF, 0:, 2147483648)"},
    {677843554, "callOnServiceChanged", "00000003000000000000000100000000610062FF", "onServiceChanged(3:610062, 1:FF)"},
    {677843555, "callOnAcquireDtvServiceInfo", "0000000100000000FF", "onAcquireDtvServiceInfo(1:FF)"},
    {677843556, "callOnHbbtvEngineStatusChanged", "7FFFFFFF", "onHbbtvEngineStatusChanged(2147483647)"},
    {677843557, "callOnPmtDataChange", "FFFF80000001800000000000000000000000",
     "onPmtDataChange(65535, 32768, 1, -2147483648, 0:)"},
    {677843558, "callOnEitDataChange", "800000000000000000000000", "onEitDataChange(-2147483648, 0:)"},
    {677843559, "callOnTimelineInfoChange", "01FF8000000001FFFFFFFFFFFFFFFF8000000000000000",
     "onTimelineInfoChange(1, 255, 128, 1, 18446744073709551615, 9223372036854775808)"},
    {677843560, "callOnSelectedComponentChange", "8000000000000001FFFF80000001FFFF",
     "onSelectedComponentChange(2147483648, 1, 65535, 32768, 1, 65535)"},
    {677843561, "callOnComponentInfoChange", "FFFF8000000000000001FFFF80000001FFFF800000000001FFFF",
     "onComponentInfoChange(65535, 2147483648, 1, 65535, 32768, 1, 65535, 32768, 1, 65535)"},
    {677843562, "callOnAllTerminalStoped", "00", "onAllTerminalStoped()"},
    {677843563, "callOnPtsNotify", "0000000000000001FFFFFFFFFFFFFFFF", "onPtsNotify(1, 18446744073709551615)"},
    {677843564, "callOnSetAudioSourceFinished", "FFFFFFFFFFFFFFFF", "onSetAudioSourceFinished(4294967295, -1)"},
    {677843565, "callOnOSDStateChanged", "00000001FFFFFFFF", "onOSDStateChanged(1, 4294967295)"},
    {677843566, "callOnDrmResultReply", "80000000000000000100000003000000008000610062",
     "onDrmResultReply(9223372036854775808, 1, 3:610062, 32768)"},
    {677843567, "callOnCaDrmConnected", "80000000000000000001FFFF", "onCaDrmConnected(9223372036854775808, 1, 65535)"},
    {677843568, "callOnCaDrmDisonnected", "FFFF8000", "onCaDrmDisonnected(65535, 32768)"},
    {677843569, "callOnCaDrmSystemStatusChanged", "0001FFFF", "onCaDrmSystemStatusChanged(1, 65535)"},
    {677843570, "callOnDATagsServicePmtDataChange", "80000001FFFFFFFFFFFF0000000300000000610062",
     "onDATagsServicePmtDataChange(32768, 1, 65535, -1, 3:610062)"},
};

/// Passes a record in memory to its event's decoder, as the platform does. Returns the decoder's result.
template <typename Event>
int decode(const typename Event::Record& record) {
    const std::vector<recording::Registration> registrations = recording::registrations();
    const auto registered = std::find_if(registrations.rbegin(), registrations.rend(), [](const auto& registration) {
        return registration.header.messageId == Event::header().messageId;
    });
    if (registered == registrations.rend()) {
        ADD_FAILURE() << "nobody decodes " << Event::kName;
        return -1;
    }
    return registered->handler(registered->header, {}, &record, registered->context);
}

}  // namespace

TEST_F(AProxy, DecodesEveryEventIntoTheCallOfItsName) {
    for (const Event& event : kEvents) {
        SCOPED_TRACE(event.decoder);
        const boost::shared_ptr<RecordingClient> client = addedClient();
        recording::reset();
        int result = -1;
        ASSERT_TRUE(recording::inject({-1, 0x1CCD7774, event.messageId, 1}, hexBytes(event.wire), &result));
        EXPECT_EQ(result, 0);
        EXPECT_THAT(client->texts(), testing::ElementsAre(event.call));
        EXPECT_THAT(recording::log(),
                    testing::ElementsAre(logged::plain(0x5F0FA0, kProxyFile, event.decoder, "Called.\n")));
        proxy->removeClient(client);
    }
}

TEST_F(AProxy, PassesEmptyIdsAndTheTransportToClients) {
    const boost::shared_ptr<RecordingClient> client = addedClient();
    frame::TransportInfo transport;
    transport.peer = 7;
    for (const Event& event : kEvents) {
        ASSERT_TRUE(recording::inject({-1, 0x1CCD7774, event.messageId, 1}, hexBytes(event.wire), nullptr, transport));
    }
    ASSERT_EQ(client->calls().size(), std::size(kEvents));
    for (const RecordingClient::Call& call : client->calls()) {
        EXPECT_EQ(call.ids, &frame::MsgIds::none) << call.text;
        EXPECT_EQ(call.transport.peer, 7U) << call.text;
    }
}

TEST_F(AProxy, AnswersZeroToEveryEvent) {
    const boost::shared_ptr<RecordingClient> client = addedClient();
    for (const int answer : {-1, 6}) {
        client->answer = answer;
        for (const Event& event : kEvents) {
            int result = -99;
            ASSERT_TRUE(recording::inject({-1, 0x1CCD7774, event.messageId, 1}, hexBytes(event.wire), &result));
            EXPECT_EQ(result, 0) << event.decoder;
        }
    }
}

TEST_F(AProxy, LogsAnEventWithoutClients) {
    for (const Event& event : kEvents) {
        recording::reset();
        int result = -99;
        ASSERT_TRUE(recording::inject({-1, 0x1CCD7774, event.messageId, 1}, hexBytes(event.wire), &result));
        EXPECT_EQ(result, 0) << event.decoder;
        EXPECT_THAT(recording::log(),
                    testing::ElementsAre(logged::plain(0x5F0FA0, kProxyFile, event.decoder, "Called.\n")));
    }
}

TEST_F(AProxy, FormatsNoUnwantedEventLine) {
    recording::setLogThreshold(0);
    for (const Event& event : kEvents) {
        ASSERT_TRUE(recording::inject({-1, 0x1CCD7774, event.messageId, 1}, hexBytes(event.wire)));
    }
    EXPECT_EQ(recording::levelChecks(), std::size(kEvents));
    EXPECT_EQ(recording::formattedLines(), 0U);
}

TEST_F(AProxy, RefusesEventsOfTheWrongLength) {
    const boost::shared_ptr<RecordingClient> client = addedClient();
    for (const Event& event : kEvents) {
        const std::vector<std::uint8_t> image = hexBytes(event.wire);
        std::vector<std::uint8_t> shorter(image.begin(), image.end() - 1);
        std::vector<std::uint8_t> longer = image;
        longer.push_back(0);
        EXPECT_FALSE(recording::inject({-1, 0x1CCD7774, event.messageId, 1}, shorter)) << event.decoder;
        EXPECT_FALSE(recording::inject({-1, 0x1CCD7774, event.messageId, 1}, longer)) << event.decoder;
    }
    EXPECT_TRUE(client->calls().empty());
}

TEST_F(AProxy, ReadsANullTextAsEmpty) {
    const boost::shared_ptr<RecordingClient> client = addedClient();
    for (const std::uint32_t length : {0U, 5U}) {
        EXPECT_EQ(decode<messages::OnAitSectionAvailable>({{length, nullptr}}), 0);
    }
    EXPECT_THAT(client->texts(), testing::ElementsAre("onAitSectionAvailable(0:)", "onAitSectionAvailable(0:)"));
}

TEST_F(AProxy, BoundsATextByItsLengthAlone) {
    const boost::shared_ptr<RecordingClient> client = addedClient();
    std::string letters("ab\0cd", 5);
    for (const std::uint32_t length : {0U, 1U, 4U}) {
        decode<messages::OnAitSectionAvailable>({{length, letters.data()}});
    }
    EXPECT_THAT(client->texts(), testing::ElementsAre("onAitSectionAvailable(0:)", "onAitSectionAvailable(1:61)",
                                                      "onAitSectionAvailable(4:61620063)"));
}

TEST_F(AProxy, BuildsTheTextsAfreshForEachClient) {
    class SpoilingClient : public RecordingClient {
    public:
        int onAitSectionAvailable(frame::MsgIds& ids, const frame::TransportInfo& transport,
                                  const std::string& section) override {
            const int result = RecordingClient::onAitSectionAvailable(ids, transport, section);
            const_cast<std::string&>(section) = "spoiled";
            return result;
        }
    };
    proxy->addClient(boost::shared_ptr<RecordingClient>(new SpoilingClient));
    const boost::shared_ptr<RecordingClient> behind = addedClient();
    injectEvent<messages::OnAitSectionAvailable>("ab");
    EXPECT_THAT(behind->texts(), testing::ElementsAre("onAitSectionAvailable(2:6162)"));
}

TEST_F(AProxy, PassesByteVectorsWithoutACopy) {
    class CarrierClient : public RecordingClient {
    public:
        const std::uint8_t* bytes = nullptr;
        std::uint32_t count = 0;
        int onStreamEventListenerSignalled(frame::MsgIds&, const frame::TransportInfo&, unsigned short, unsigned short,
                                           unsigned short, short, const std::string&, const std::string&,
                                           const _ovxDeserVectorU8_struct& data) override {
            bytes = data.data;
            count = data.count;
            return 0;
        }
    };
    const boost::shared_ptr<CarrierClient> client(new CarrierClient);
    proxy->addClient(client);
    std::uint8_t bytes[] = {1, 2, 3};
    decode<messages::OnStreamEventListenerSignalled>({1, 2, 3, 4, {0, nullptr}, {0, nullptr}, {3, bytes}});
    EXPECT_EQ(client->bytes, bytes);
    EXPECT_EQ(client->count, 3U);
}
