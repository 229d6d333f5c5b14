// EmptyListener: a listener needs only the operations that it overrides.
#include "dvb_helpers/empty_listener.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "recording_listener.h"
#include "service_fixture.h"

namespace {

class ChannelListener final : public velmora::dtv::helpers::EmptyListener {
public:
    void OnChannelChanged(bool, std::uint16_t, std::uint16_t, std::uint16_t newSid) override { sid = newSid; }

    std::atomic<int> sid{-1};
};

using AnEmptyListener = AServiceObject;

}  // namespace

TEST_F(AnEmptyListener, ReceivesOnlyWhatItOverrides) {
    const auto listener = std::make_shared<ChannelListener>();
    auto* const api = velmora::dvbservice::BrowserDvbAPI::getInstance();
    api->addListener(listener);
    injectEvent<messages::OnEitDataChange>(0, std::string("\x4E"));
    injectEvent<messages::OnServiceChanged>(std::string("service_started"), std::string("1:2:3"));
    api->removeListener(listener);
    EXPECT_EQ(listener->sid, 3);
}

TEST_F(AnEmptyListener, LetsEveryEventPassToTheListenersBehindIt) {
    using testing::StartsWith;
    const auto empty = std::make_shared<velmora::dtv::helpers::EmptyListener>();
    const auto behind = std::make_shared<RecordingListener>();
    auto* const api = velmora::dvbservice::BrowserDvbAPI::getInstance();
    api->addListener(empty);
    api->addListener(behind);
    const auto number = [](auto value) { return static_cast<unsigned short>(value); };
    const std::string section = "section";
    injectEvent<messages::OnServiceChanged>(std::string("service_started"), std::string("1:2:3"));
    injectEvent<messages::OnAitChannelInfoUpdated>(short{0}, number(1), number(2), number(3));
    injectEvent<messages::OnSelectedComponentChange>(0U, 0U, number(256), number(1), number(2), number(3));
    injectEvent<messages::OnComponentInfoChange>(number(0), 0U, 256U, number(27), number(0), number(0), number(1),
                                                 number(0), 0U, number(1));
    injectEvent<messages::OnAitSectionAvailable>(section);
    injectEvent<messages::OnHbbtvEngineStatusChanged>(1);
    injectEvent<messages::OnPmtDataChange>(number(1), number(2), number(3), 0, section);
    injectEvent<messages::OnEitDataChange>(0, section);
    injectEvent<messages::OnTimelineInfoChange>(std::uint8_t{1}, std::uint8_t{1}, std::uint8_t{0}, 1000U,
                                                std::uint64_t{5}, std::uint64_t{6});
    injectEvent<messages::OnAllTerminalStoped>();
    injectEvent<messages::OnPtsNotify>(std::uint64_t{5}, std::uint64_t{6});
    injectEvent<messages::OnOSDStateChanged>(1U, 1U);
    injectEvent<messages::OnDrmResultReply>(std::uint64_t{1}, std::uint8_t{0}, section, number(0));
    injectEvent<messages::OnCaDrmConnected>(std::uint64_t{1}, number(0), number(0));
    injectEvent<messages::OnCaDrmDisonnected>(number(0), number(0));
    injectEvent<messages::OnCaDrmSystemStatusChanged>(number(0), number(1));
    injectEvent<messages::OnDATagsServicePmtDataChange>(number(1), number(2), number(3), 0, section);
    api->removeListener(empty);
    api->removeListener(behind);
    EXPECT_THAT(
        behind->calls(),
        testing::ElementsAre(StartsWith("OnChannelChanged"), StartsWith("onAITChannelInfoChanged"),
                             StartsWith("onSelectedComponentChanged"), StartsWith("onComponentInfoChanged"),
                             StartsWith("onAITSectionUpdated"), StartsWith("onHbbTVEngineStatusChanged"),
                             StartsWith("onPMTSectionUpdated"), StartsWith("onEITSectionUpdated"),
                             StartsWith("onTimelineInfoDataChange"), StartsWith("onAllTerminalStoped"),
                             StartsWith("onPtsNotify"), StartsWith("onOSDStateChanged"), StartsWith("onDrmResultReply"),
                             StartsWith("onCaDrmConnected"), StartsWith("onCaDrmDisonnected"),
                             StartsWith("onCaDrmSystemStatusChanged"), StartsWith("onDATagsServicePmtSectionUpdated")));
}
