// EmptyListener: a listener needs only the operations that it overrides.
#include "dvb_helpers/empty_listener.h"

#include <gtest/gtest.h>

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
