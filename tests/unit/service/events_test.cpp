// Forwarded events: from wire bytes with extreme values to the line, the trace and the listener's call. Typed out,
// independently of the message catalogue.
#include "hex_bytes.h"
#include "recording_listener.h"
#include "service_fixture.h"

namespace {

constexpr const char* kFile = "browser_dvb_service_events.cpp";

struct Event {
    const char* operation;
    std::uint32_t messageId;
    const char* wire;
    bool tagged;
    const char* message;
    const char* call;  // null: no listener is called
    bool traced;
};

const Event kEvents[] = {
    {"onAitChannelInfoUpdated", 677843539, "8000FFFF80000001", false,
     "called,AIT ChannelInfoUpdate: (-32768-65535:32768:1).\n", "onAITChannelInfoChanged()", true},
    {"onAitParsingStateChanged", 677843540, "FFFF", false, "ait parsing state change:state = 65535.\n", nullptr, false},
    {"onAitSectionAvailable", 677843541, "0000000300000000610062", false, "called,AIT section len:3.\n",
     "onAITSectionUpdated(65535, 32768, 1, 3:610062)", true},
    {"onHbbtvEngineStatusChanged", 677843556, "80000000", false, "called, engine status -2147483648.\n",
     "onHbbTVEngineStatusChanged(-2147483648)", true},
    {"onPmtDataChange", 677843557, "FFFF00010000FFFFFFFF0000000100000000FF", false,
     "onid:65535, tsid:1, sid:0, update:-1,section len 1.\n", "onPMTSectionUpdated(65535, 1, 0, -1, 1:FF)", false},
    {"onEitDataChange", 677843558, "7FFFFFFF0000000000000000", false, "update:2147483647,section len 0.\n",
     "onEITSectionUpdated(2147483647, 0:)", false},
    {"onTimelineInfoChange", 677843559, "FF8000FFFFFFFFFFFFFFFFFFFFFFFF8000000000000000", false,
     "onTimelineInfoChange update data timescale:4294967295 mediaTimestamp:18446744073709551615 "
     "ptsValue:9223372036854775808.\n",
     "onTimelineInfoDataChange(255, 128, 0, 4294967295, 18446744073709551615, 9223372036854775808)", false},
    {"onSelectedComponentChange", 677843560, "FFFFFFFF000000021FFF000104016DCA", false,
     "selectedIndex:-1, type:2,pid:8191,onid:1,tsid:1025,sid:28106\n",
     "onSelectedComponentChanged(4294967295, 2, 8191, 1, 1025, 28106)", false},
    {"onComponentInfoChange", 677843561, "0001000000020000012C00040005000600070008FFFFFFFFFFFF", false,
     "index:1, type:2,pid:300,encoding:4,aspect_ratio:5,audiochannels:6.\n",
     "onComponentInfoChanged(1, 2, 300, 4, 5, 6, 7, 8, 4294967295, 65535)", false},
    {"onAllTerminalStoped", 677843562, "00", false, "onAllTerminalStoped.\n", "onAllTerminalStoped()", false},
    {"onPtsNotify", 677843563, "FFFFFFFFFFFFFFFF00000001FFFFFFFF", true, "onPtsNotify Called\n",
     "onPtsNotify(18446744073709551615, 8589934591)", false},
    {"onSetAudioSourceFinished", 677843564, "FFFFFFFFFFFFFFFF", true, "set audio source finished:-1,-1.\n", nullptr,
     false},
    {"onOSDStateChanged", 677843565, "FFFFFFFF00000001", true, "layerID:-1, state:1\n",
     "onOSDStateChanged(4294967295, 1)", false},
    {"onDrmResultReply", 677843566, "FFFFFFFFFFFFFFFFFF0000000300000000FFFF610062", true,
     "session_id:18446744073709551615, result_code:255, slot id:65535\n",
     "onDrmResultReply(18446744073709551615, 255, 3:610062, 65535)", false},
    {"onCaDrmConnected", 677843567, "8000000000000000FFFF0001", true,
     "session:9223372036854775808, slot id:65535, result code:1\n", "onCaDrmConnected(9223372036854775808, 65535, 1)",
     false},
    {"onCaDrmDisonnected", 677843568, "FFFF0002", true, "slot id:65535, result code:2\n",
     "onCaDrmDisonnected(65535, 2)", false},
    {"onCaDrmSystemStatusChanged", 677843569, "0003FFFF", true, "slot id:3, status:65535\n",
     "onCaDrmSystemStatusChanged(3, 65535)", false},
    {"onDATagsServicePmtDataChange", 677843570, "0001000200030000000400000002000000007879", false,
     "onid:1, tsid:2, sid:3, update:4,section len 2.\n", "onDATagsServicePmtSectionUpdated(1, 2, 3, 4, 2:7879)", false},
};

class AnEvent : public AServiceObject {
protected:
    AnEvent() { api()->addListener(listener); }
    ~AnEvent() override { api()->removeListener(listener); }
    static velmora::dvbservice::BrowserDvbAPI* api() { return velmora::dvbservice::BrowserDvbAPI::getInstance(); }

    static void inject(const Event& event) {
        recording::reset();
        int result = -1;
        ASSERT_TRUE(recording::inject({-1, 0x1CCD7774, event.messageId, 1}, hexBytes(event.wire), &result));
        EXPECT_EQ(result, 0);
    }
    /// The lines of the service object's own handler.
    static std::vector<recording::LogLine> ownLines(const Event& event) {
        std::vector<recording::LogLine> own;
        for (recording::LogLine& line : lines()) {
            if (line.file == kFile && line.function == event.operation) {
                own.push_back(std::move(line));
            }
        }
        return own;
    }

    std::shared_ptr<RecordingListener> listener = std::make_shared<RecordingListener>();
};

}  // namespace

TEST_F(AnEvent, ReachesTheListenersWithItsValuesUnchanged) {
    std::vector<std::string> expected;
    for (const Event& event : kEvents) {
        SCOPED_TRACE(event.operation);
        inject(event);
        if (event.call != nullptr) {
            expected.emplace_back(event.call);
        }
        EXPECT_EQ(listener->calls(), expected);
    }
}

TEST_F(AnEvent, WritesItsLineFirst) {
    for (const Event& event : kEvents) {
        SCOPED_TRACE(event.operation);
        std::size_t linesAtCall = 0;
        listener->reaction = [&] { linesAtCall = ownLines(event).size(); };
        inject(event);
        const std::vector<recording::LogLine> own = ownLines(event);
        ASSERT_FALSE(own.empty());
        EXPECT_EQ(linesAtCall, event.call == nullptr ? 0U : 1U);
        EXPECT_THAT(own.front(), event.tagged ? testing::Matcher<const recording::LogLine&>(logged::tagged(
                                                    kOrdinary, kTag, kFile, event.operation, event.message))
                                              : testing::Matcher<const recording::LogLine&>(
                                                    logged::plain(kOrdinary, kFile, event.operation, event.message)));
    }
}

TEST_F(AnEvent, IsTracedOnlyWhereListed) {
    for (const Event& event : kEvents) {
        SCOPED_TRACE(event.operation);
        inject(event);
        std::vector<std::string> scopes;
        for (const std::string& trace : logged::traces()) {
            if (trace.rfind("[TRACE]", 0) != 0) {
                scopes.push_back(trace);
            }
        }
        EXPECT_EQ(scopes, event.traced ? tracePair(event.operation, kFile) : std::vector<std::string>{});
    }
}

TEST_F(AnEvent, CarriesTextOfAnyLengthAndAnyBytes) {
    const auto u16 = [](int value) { return static_cast<unsigned short>(value); };
    for (const std::size_t length : {std::size_t{0}, std::size_t{1}, std::size_t{4096}}) {
        // Every second byte is zero, starting with the first.
        std::string text(length, '\0');
        std::string hex = std::to_string(length) + ":";
        for (std::size_t at = 0; at < length; ++at) {
            text[at] = at % 2 == 0 ? '\0' : 'Z';
            hex += at % 2 == 0 ? "00" : "5A";
        }
        const auto expectLast = [&](const std::string& call) { EXPECT_EQ(listener->calls().back(), call); };
        injectEvent<messages::OnEitDataChange>(1, text);
        expectLast("onEITSectionUpdated(1, " + hex + ")");
        injectEvent<messages::OnPmtDataChange>(u16(1), u16(2), u16(3), 4, text);
        expectLast("onPMTSectionUpdated(1, 2, 3, 4, " + hex + ")");
        injectEvent<messages::OnDATagsServicePmtDataChange>(u16(1), u16(2), u16(3), 4, text);
        expectLast("onDATagsServicePmtSectionUpdated(1, 2, 3, 4, " + hex + ")");
        injectEvent<messages::OnAitChannelInfoUpdated>(static_cast<short>(0), u16(1), u16(2), u16(3));
        injectEvent<messages::OnAitSectionAvailable>(text);
        expectLast("onAITSectionUpdated(1, 2, 3, " + hex + ")");
        injectEvent<messages::OnDrmResultReply>(1ULL, static_cast<unsigned char>(2), text, u16(3));
        expectLast("onDrmResultReply(1, 2, " + hex + ", 3)");
    }
}

TEST_F(AnEvent, ReturnsZeroFromEachHandler) {
    frame::MsgIds ids;
    const frame::TransportInfo from;
    EXPECT_EQ(service->onAitChannelInfoUpdated(ids, from, 0, 1, 2, 3), 0);
    EXPECT_EQ(service->onAitParsingStateChanged(ids, from, 1), 0);
    EXPECT_EQ(service->onAitSectionAvailable(ids, from, ""), 0);
    EXPECT_EQ(service->onHbbtvEngineStatusChanged(ids, from, 1), 0);
    EXPECT_EQ(service->onPmtDataChange(ids, from, 1, 2, 3, 4, ""), 0);
    EXPECT_EQ(service->onEitDataChange(ids, from, 1, ""), 0);
    EXPECT_EQ(service->onTimelineInfoChange(ids, from, 1, 2, 3, 4, 5, 6), 0);
    EXPECT_EQ(service->onSelectedComponentChange(ids, from, 1, 2, 3, 4, 5, 6), 0);
    EXPECT_EQ(service->onComponentInfoChange(ids, from, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10), 0);
    EXPECT_EQ(service->onAllTerminalStoped(ids, from), 0);
    EXPECT_EQ(service->onPtsNotify(ids, from, 1, 2), 0);
    EXPECT_EQ(service->onSetAudioSourceFinished(ids, from, 1, -1), 0);
    EXPECT_EQ(service->onOSDStateChanged(ids, from, 1, 2), 0);
    EXPECT_EQ(service->onDrmResultReply(ids, from, 1, 2, "", 3), 0);
    EXPECT_EQ(service->onCaDrmConnected(ids, from, 1, 2, 3), 0);
    EXPECT_EQ(service->onCaDrmDisonnected(ids, from, 1, 2), 0);
    EXPECT_EQ(service->onCaDrmSystemStatusChanged(ids, from, 1, 2), 0);
    EXPECT_EQ(service->onDATagsServicePmtDataChange(ids, from, 1, 2, 3, 4, ""), 0);
    EXPECT_EQ(service->onServiceChanged(ids, from, "service_failed", ""), 0);
    EXPECT_EQ(service->onAcquireDtvServiceInfo(ids, from, ""), 0);
}

TEST_F(AnEvent, ThatNobodyHandlesGoesNoFurther) {
    std::uint8_t bytes[] = {1, 2};
    const _ovxDeserVectorU8_struct carrier{2, bytes};
    const auto u16 = [](int value) { return static_cast<unsigned short>(value); };
    const auto u8 = [](int value) { return static_cast<unsigned char>(value); };
    const short tag = -1;
    const std::string text = "text";
    injectEvent<messages::OnAitInfoAvailable>(1U, u16(2), u8(3), u8(4), u8(5), u8(6), text, text, u8(7));
    injectEvent<messages::OnAitBoundaryExtensionAvailable>(1U, u16(2), text);
    injectEvent<messages::OnDsmccMounted>(1U, u16(2), u16(3), u16(4), tag, u16(5), text);
    injectEvent<messages::OnStreamEventListenerAdded>(1U, u16(2), u16(3), u16(4), tag, text, text, 5U);
    injectEvent<messages::OnStreamEventListenerRemoved>(1U, u16(2), u16(3), u16(4), tag, text, text, 5U);
    injectEvent<messages::OnStreamEventListenerSignalled>(u16(1), u16(2), u16(3), tag, text, text, carrier);
    injectEvent<messages::OnVodMaxdomeSecureSerialNumber>(text);
    EXPECT_TRUE(listener->calls().empty());
    EXPECT_TRUE(lines().empty());
    EXPECT_TRUE(logged::traces().empty());
}

TEST_F(AnEvent, WithThePmtOfTheTunedServiceChangesNothing) {
    service->tuneToService(12, 1, 2, 300, 0);
    recording::reset();
    injectEvent<messages::OnPmtDataChange>(static_cast<unsigned short>(1), static_cast<unsigned short>(2),
                                           static_cast<unsigned short>(300), 0, "pmt");
    EXPECT_THAT(recording::logOf("onPmtDataChange"), testing::SizeIs(1));
    EXPECT_EQ(listener->calls(), std::vector<std::string>{"onPMTSectionUpdated(1, 2, 300, 0, 3:706D74)"});
}

TEST_F(AnEvent, ClearsTheDescriptorAfterForwardingAnotherServicesPmt) {
    service->tuneToService(12, 1, 2, 300, 0);
    service->tuneToService("dsd", 299, 0);  // does not change the tuned service
    recording::setSendResult(-107);
    service->tuneToService(12, 1, 2, 298, 0);  // a tune that fails does not either
    std::string duringEvent;
    listener->reaction = [&] { duringEvent = service->getCurrentDsd(); };
    const auto pmtOf = [](int sid) {
        recording::reset();
        injectEvent<messages::OnPmtDataChange>(static_cast<unsigned short>(1), static_cast<unsigned short>(2),
                                               static_cast<unsigned short>(sid), 0, "");
    };
    const auto changeLine = [](const std::string& message) {
        return logged::plain(kOrdinary, kFile, "onPmtDataChange", message);
    };
    pmtOf(300);
    EXPECT_EQ(service->getCurrentDsd(), "dsd");
    pmtOf(301);
    EXPECT_EQ(duringEvent, "dsd");
    EXPECT_THAT(recording::logOf("onPmtDataChange"),
                testing::Contains(changeLine("pmt sid change last = 300, new=301 \n")));
    EXPECT_EQ(service->getCurrentDsd(), "");
    pmtOf(301);
    EXPECT_THAT(recording::logOf("onPmtDataChange"),
                testing::Contains(changeLine("pmt sid change last = -1, new=301 \n")));
}

TEST_F(AnEvent, ComparesThePmtWithTheUncutServiceId) {
    const auto changeAfter = [this](int tuned, int sid) {
        service->tuneToService("dsd", 1, 0);
        service->tuneToService(12, 1, 2, tuned, 0);
        recording::reset();
        injectEvent<messages::OnPmtDataChange>(static_cast<unsigned short>(1), static_cast<unsigned short>(2),
                                               static_cast<unsigned short>(sid), 0, "");
        const std::vector<recording::LogLine> own = recording::logOf("onPmtDataChange");
        EXPECT_EQ(BrowserDVBServiceTestAccess::pmtServiceId(*service), own.size() == 1 ? tuned : -1);
        EXPECT_LE(own.size(), 2U);
        return own.size() == 1 ? std::string() : own.back().message;
    };
    EXPECT_EQ(changeAfter(65535, 65535), "");
    EXPECT_EQ(changeAfter(0, 0), "");
    EXPECT_EQ(changeAfter(65536 + 300, 300), "pmt sid change last = 65836, new=300 \n");
    EXPECT_EQ(changeAfter(-1, 65535), "pmt sid change last = -1, new=65535 \n");
    EXPECT_EQ(changeAfter(-2, 65534), "pmt sid change last = -2, new=65534 \n");
}

TEST_F(AnEvent, TreatsThePmtAsAnotherServicesBeforeATune) {
    service->tuneToService("dsd", 0, 0);
    injectEvent<messages::OnPmtDataChange>(static_cast<unsigned short>(1), static_cast<unsigned short>(2),
                                           static_cast<unsigned short>(0), 0, "");
    EXPECT_EQ(recording::logOf("onPmtDataChange").back().message, "pmt sid change last = -1, new=0 \n");
    EXPECT_EQ(service->getCurrentDsd(), "");
}

TEST_F(AnEvent, KeepsTheDescriptorOnADaTagsPmt) {
    service->tuneToService(12, 1, 2, 300, 0);
    service->tuneToService("dsd", 299, 0);
    for (const int sid : {300, 301}) {
        recording::reset();
        injectEvent<messages::OnDATagsServicePmtDataChange>(
            static_cast<unsigned short>(1), static_cast<unsigned short>(2), static_cast<unsigned short>(sid), 0, "");
        EXPECT_EQ(recording::logOf("onDATagsServicePmtDataChange").size(), 1U);
        EXPECT_EQ(service->getCurrentDsd(), "dsd");
        EXPECT_EQ(BrowserDVBServiceTestAccess::pmtServiceId(*service), 300);
    }
}

TEST_F(AnEvent, WritesNoLineButItsOwn) {
    for (const Event& event : kEvents) {
        SCOPED_TRACE(event.operation);
        const std::string name = event.operation;
        std::vector<std::string> expected = {name + ": " + event.message};
        if (name == "onAitChannelInfoUpdated") {
            expected.emplace_back("[TRACE] onAITChannelInfoChanged");
            expected.emplace_back("onAITChannelInfoChanged: New AIT ChannelInfo: 65535,32768,1\n");
        } else if (name == "onAitSectionAvailable") {
            expected.emplace_back("onAITSectionUpdated: New AIT Section: 65535,32768,1, len: 3\n");
        }
        if (event.traced) {
            expected.insert(expected.begin(), "-> " + name);
        }
        std::vector<std::string> atCall;
        listener->reaction = [&atCall] { atCall = logged::story(); };
        inject(event);
        if (event.call != nullptr) {
            EXPECT_EQ(atCall, expected) << "all is written before listeners are called";
        }
        if (event.traced) {
            expected.push_back("<- " + name);
        } else if (name == "onPmtDataChange") {
            expected.emplace_back("onPmtDataChange: pmt sid change last = -1, new=0 \n");
        }
        EXPECT_EQ(logged::story(), expected);
    }
}

TEST_F(AnEvent, LogsAPmtChangeAsOrdinary) {
    injectEvent<messages::OnPmtDataChange>(static_cast<unsigned short>(1), static_cast<unsigned short>(2),
                                           static_cast<unsigned short>(3), 0, "");
    EXPECT_THAT(recording::logOf("onPmtDataChange").back(),
                logged::plain(kOrdinary, kFile, "onPmtDataChange", "pmt sid change last = -1, new=3 \n"));
}

TEST_F(AnEvent, ShowsTheLengthOfItsSectionWhateverTheBytes) {
    const auto u16 = [](int value) { return static_cast<unsigned short>(value); };
    for (const std::size_t length : {std::size_t{0}, std::size_t{3}, std::size_t{70000}}) {
        const std::string section(length, '\0');
        const std::string shown = std::to_string(length) + ".\n";
        recording::reset();
        injectEvent<messages::OnEitDataChange>(1, section);
        injectEvent<messages::OnPmtDataChange>(u16(1), u16(2), u16(3), 4, section);
        injectEvent<messages::OnDATagsServicePmtDataChange>(u16(1), u16(2), u16(3), 4, section);
        injectEvent<messages::OnAitSectionAvailable>(section);
        const auto lineOf = [](const char* handler) { return recording::logOf(handler).at(0).message; };
        EXPECT_EQ(lineOf("onEitDataChange"), "update:1,section len " + shown);
        EXPECT_EQ(lineOf("onPmtDataChange"), "onid:1, tsid:2, sid:3, update:4,section len " + shown);
        EXPECT_EQ(lineOf("onDATagsServicePmtDataChange"), "onid:1, tsid:2, sid:3, update:4,section len " + shown);
        EXPECT_EQ(lineOf("onAitSectionAvailable"), "called,AIT section len:" + shown);
    }
}
