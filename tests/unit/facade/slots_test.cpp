// Calls the DVB API and its listeners only by slot number: the numbers here are the binary interface.
#include "call_slot.h"
#include "facade_fixture.h"

namespace {

/// Identifier of the message that the last call sent.
std::uint32_t sentId() {
    const std::vector<recording::SentMessage> sent = recording::sent();
    const std::uint32_t id = sent.size() == 1 ? sent[0].header.messageId : 0;
    recording::reset();
    return id;
}

}  // namespace

TEST_F(TheDvbApi, DoesWhatEachPositionSays) {
    injectEvent<messages::OnAcquireDtvServiceInfo>("4:5:6");
    recording::reset();
    callSlot<void>(api, 2);
    callSlot<void>(api, 3);
    EXPECT_EQ(callSlot<std::string>(api, 4), "DvbAPIInterface");
    int onid = 0;
    int tsid = 0;
    int sid = 0;
    EXPECT_EQ((callSlot<int, int&, int&, int&>(api, 5, onid, tsid, sid)), 0);
    EXPECT_EQ(onid * 100 + tsid * 10 + sid, 456);
    EXPECT_EQ(callSlot<std::string>(api, 6), "ccid:4:5:6");
    const std::string text = "dsd";
    EXPECT_EQ(callSlot<int>(api, 8), 0);
    EXPECT_EQ(recording::sent().at(0).wire.back(), 1) << "failed";
    EXPECT_EQ(sentId(), 0x2867123DU);
    EXPECT_EQ(callSlot<int>(api, 9), 0);
    EXPECT_EQ(recording::sent().at(0).wire.back(), 0) << "started";
    EXPECT_EQ(sentId(), 0x2867123DU);
    callSlot<void>(api, 10);
    EXPECT_EQ(sentId(), 0x2867123BU);
    callSlot<void>(api, 11, 1, 2, 3, 4, 5);
    EXPECT_EQ(sentId(), 0x28671236U);
    callSlot<void, const std::string&, int, int>(api, 12, text, 4, 5);
    EXPECT_EQ(sentId(), 0x28671236U);
    EXPECT_EQ(callSlot<std::string>(api, 7), "dsd");
    callSlot<void>(api, 13, 1, 2, 3);
    EXPECT_EQ(sentId(), 0x28671237U);
    callSlot<void>(api, 14, 1);
    EXPECT_EQ(sentId(), 0x28671239U);
    callSlot<void>(api, 15, 1);
    EXPECT_EQ(sentId(), 0x28671238U);
    callSlot<void>(api, 19);
    EXPECT_EQ(sentId(), 0x2867123CU);
    callSlot<int>(api, 20, std::uint32_t{1});
    EXPECT_EQ(sentId(), 0x28671249U);
    callSlot<int>(api, 21, std::uint32_t{1}, std::uint32_t{2}, std::uint32_t{3});
    EXPECT_EQ(sentId(), 0x2867124AU);
    callSlot<int>(api, 22);
    EXPECT_EQ(sentId(), 0x2867124BU);
    callSlot<int>(api, 23, std::uint32_t{1});
    EXPECT_EQ(sentId(), 0x2867124CU);
    callSlot<int>(api, 24, std::uint32_t{1});
    EXPECT_EQ(sentId(), 0x2867124DU);
    callSlot<int, std::uint64_t, std::uint16_t, std::uint16_t, const std::string&, const std::string&>(api, 25, 1, 2, 3,
                                                                                                       text, text);
    EXPECT_EQ(sentId(), 0x2867124EU);
    callSlot<int>(api, 26, std::uint64_t{1});
    EXPECT_EQ(sentId(), 0x2867124FU);
    callSlot<int>(api, 27, std::uint16_t{1});
    EXPECT_EQ(sentId(), 0x28671250U);
    callSlot<int>(api, 28, 1, 1);
    EXPECT_EQ(sentId(), 0x28671251U);
    callSlot<void>(api, 29);
    EXPECT_EQ(sentId(), 0x28671252U);
}

TEST_F(TheDvbApi, TakesListenersAtTheirPositions) {
    // A shared pointer by value is passed as the address of a copy, like every class with a destructor.
    std::shared_ptr<velmora::dtv::DVBServiceListener> listener = std::make_shared<RecordingListener>();
    const auto& heard = static_cast<RecordingListener&>(*listener);
    std::shared_ptr<velmora::dtv::DVBServiceListener> copy = listener;
    callSlot<void, std::shared_ptr<velmora::dtv::DVBServiceListener>&>(api, 17, copy);
    injectEvent<messages::OnAllTerminalStoped>();
    EXPECT_EQ(heard.calls().size(), 1U);
    copy = listener;
    callSlot<void, std::shared_ptr<velmora::dtv::DVBServiceListener>&>(api, 18, copy);
    injectEvent<messages::OnAllTerminalStoped>();
    EXPECT_EQ(heard.calls().size(), 1U);
}

TEST(AListener, HasEachOperationAtItsPosition) {
    RecordingListener listener;
    const auto u16 = [](int value) { return static_cast<std::uint16_t>(value); };
    const std::string text = "ab";
    std::string byValue = text;
    callSlot<void>(&listener, 2, true, u16(1), u16(2), u16(3));
    callSlot<void>(&listener, 3);
    callSlot<void>(&listener, 4, std::uint32_t{1}, std::uint32_t{2}, u16(3), u16(4), u16(5), u16(6));
    callSlot<void>(&listener, 5, u16(1), std::uint32_t{2}, std::uint32_t{3}, u16(4), u16(5), u16(6), u16(7), u16(8),
                   std::uint32_t{9}, u16(10));
    callSlot<void, std::uint16_t, std::uint16_t, std::uint16_t, const std::string&>(&listener, 6, 1, 2, 3, text);
    callSlot<void>(&listener, 7, velmora::dtv::HbbTVEngineStatus{5});
    callSlot<void, std::uint16_t, std::uint16_t, std::uint16_t, int, std::string&>(&listener, 8, 1, 2, 3, 4, byValue);
    callSlot<void, int, std::string&>(&listener, 9, 1, byValue);
    callSlot<void>(&listener, 10, std::uint8_t{1}, std::uint8_t{2}, std::uint8_t{3}, std::uint32_t{4}, std::uint64_t{5},
                   std::uint64_t{6});
    callSlot<void>(&listener, 11);
    callSlot<void>(&listener, 12, std::uint64_t{1}, std::uint64_t{2});
    callSlot<void>(&listener, 13, std::uint32_t{1}, std::uint32_t{2});
    callSlot<void, std::uint64_t, std::uint8_t, const std::string&, std::uint16_t>(&listener, 14, 1, 2, text, 3);
    callSlot<void>(&listener, 15, std::uint64_t{1}, u16(2), u16(3));
    callSlot<void>(&listener, 16, u16(1), u16(2));
    callSlot<void>(&listener, 17, u16(1), u16(2));
    callSlot<void, std::uint16_t, std::uint16_t, std::uint16_t, int, std::string&>(&listener, 18, 1, 2, 3, 4, byValue);
    EXPECT_THAT(
        listener.calls(),
        testing::ElementsAre(
            "OnChannelChanged(1, 1, 2, 3)", "onAITChannelInfoChanged()", "onSelectedComponentChanged(1, 2, 3, 4, 5, 6)",
            "onComponentInfoChanged(1, 2, 3, 4, 5, 6, 7, 8, 9, 10)", "onAITSectionUpdated(1, 2, 3, 2:6162)",
            "onHbbTVEngineStatusChanged(5)", "onPMTSectionUpdated(1, 2, 3, 4, 2:6162)",
            "onEITSectionUpdated(1, 2:6162)", "onTimelineInfoDataChange(1, 2, 3, 4, 5, 6)", "onAllTerminalStoped()",
            "onPtsNotify(1, 2)", "onOSDStateChanged(1, 2)", "onDrmResultReply(1, 2, 2:6162, 3)",
            "onCaDrmConnected(1, 2, 3)", "onCaDrmDisonnected(1, 2)", "onCaDrmSystemStatusChanged(1, 2)",
            "onDATagsServicePmtSectionUpdated(1, 2, 3, 4, 2:6162)"));
}
