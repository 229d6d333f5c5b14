// The values of every event: each has its name, notation and unit.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "events.h"

namespace {

using namespace dvbshell;

class TheValuesOf : public testing::Test {
protected:
    std::string next() {
        const std::optional<Event> event = queue.take(Clock::now());
        return event ? event->name + "  " + message_fields::text(event->values) : "none";
    }

    EventQueue queue;
    std::shared_ptr<velmora::dtv::DVBServiceListener> listener = makeListener(queue);
};

}  // namespace

TEST_F(TheValuesOf, AChannelHaveNames) {
    listener->OnChannelChanged(true, 65535, 2, 3);
    EXPECT_EQ(next(), "OnChannelChanged  started yes, service 65535:2:3");
    listener->onAITChannelInfoChanged();
    EXPECT_EQ(next(), "onAITChannelInfoChanged  ");
}

TEST_F(TheValuesOf, AnEventBeginWithItsTriplet) {
    Event event;
    event.onid = 1;
    event.tsid = 2;
    event.sid = 3;
    event.values = {namedValue("name", "A")};
    EXPECT_EQ(message_fields::text(valuesOf(event)), "service 1:2:3, name A");
    listener->onPMTSectionUpdated(1, 2, 3, 0, "p");
    EXPECT_EQ(message_fields::text(valuesOf(*queue.take(Clock::now()))), "service 1:2:3, update first") << "once";
}

TEST_F(TheValuesOf, SectionsHaveNames) {
    listener->onAITSectionUpdated(1, 2, 3, "a");
    EXPECT_EQ(next(), "onAITSectionUpdated  service 1:2:3");
    listener->onPMTSectionUpdated(1, 2, 3, 0, "p");
    EXPECT_EQ(next(), "onPMTSectionUpdated  service 1:2:3, update first");
    listener->onEITSectionUpdated(1, "e");
    EXPECT_EQ(next(), "onEITSectionUpdated  update changed");
    listener->onDATagsServicePmtSectionUpdated(1, 2, 3, 1, "p");
    EXPECT_EQ(next(), "onDATagsServicePmtSectionUpdated  service 1:2:3, update changed");
}

TEST_F(TheValuesOf, ComponentsHaveNames) {
    listener->onSelectedComponentChanged(0xFFFFFFFF, 2, 8191, 1, 2, 3);
    EXPECT_EQ(next(),
              "onSelectedComponentChanged  component_index none, component_type subtitle, pid 8191, service 1:2:3");
    listener->onComponentInfoChanged(4, 1, 257, 0x1B, 3, 6, 0x0B, 1, 0x656E67, 0);
    EXPECT_EQ(next(),
              "onComponentInfoChanged  component_index 4, component_type audio, pid 257, encoding 0x001B, aspect_ratio "
              "16:9, audio_channels 6, component_tag 0x0B, scrambled yes, language eng, presented no");
}

TEST_F(TheValuesOf, TimesHaveNamesAndUnits) {
    listener->onPtsNotify(12345, 12300);
    EXPECT_EQ(next(), "onPtsNotify  pts 12345 (90 kHz), pcr_base 12300 (90 kHz)");
    listener->onTimelineInfoDataChange(11, 1, 3, 1000, 77, 90000);
    EXPECT_EQ(next(),
              "onTimelineInfoDataChange  component_tag 0x0B, timeline_id 0x01, timeline_flags paused+discontinuity, "
              "timescale 1000 (ticks a second), media_timestamp 77 (ticks of timescale), pts 90000 (90 kHz)");
}

TEST_F(TheValuesOf, CaSystemsHaveNames) {
    listener->onDrmResultReply(9, 2, "text", 65535);
    EXPECT_EQ(next(), "onDrmResultReply  ca_session 9, result_code cannot process request, message text, slot none");
    listener->onCaDrmConnected(9, 3, 0);
    EXPECT_EQ(next(), "onCaDrmConnected  ca_session 9, slot 3, result 0");
    listener->onCaDrmDisonnected(3, 1);
    EXPECT_EQ(next(), "onCaDrmDisonnected  slot 3, result 1");
    listener->onCaDrmSystemStatusChanged(3, 1);
    EXPECT_EQ(next(), "onCaDrmSystemStatusChanged  slot 3, module_status inserted");
}

TEST_F(TheValuesOf, TheSetHaveNames) {
    listener->onOSDStateChanged(7, 1);
    EXPECT_EQ(next(), "onOSDStateChanged  layer 7, osd_state shown");
    listener->onHbbTVEngineStatusChanged(static_cast<velmora::dtv::HbbTVEngineStatus>(-5));
    EXPECT_EQ(next(), "onHbbTVEngineStatusChanged  engine_status -5");
    listener->onAllTerminalStoped();
    EXPECT_EQ(next(), "onAllTerminalStoped  ");
}
