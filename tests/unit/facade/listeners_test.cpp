// The listeners: their registry, and the fan-out of an event.
#include "facade_fixture.h"

namespace {

using Listener = std::shared_ptr<RecordingListener>;

/// Registers listeners for the length of a test.
class AListenerRegistry : public TheDvbApi {
protected:
    ~AListenerRegistry() override {
        for (const Listener& listener : made) {
            api->removeListener(listener);
            listener->reaction = nullptr;
        }
        api->removeListener(nullptr);
    }
    Listener make() {
        made.push_back(std::make_shared<RecordingListener>());
        return made.back();
    }
    Listener added() {
        const Listener listener = make();
        api->addListener(listener);
        return listener;
    }
    static void ptsEvent() { injectEvent<messages::OnPtsNotify>(1ULL, 2ULL); }

private:
    std::vector<Listener> made;
};

constexpr const char* kFile = "browser_dvb_apis_listeners.cpp";

}  // namespace

TEST_F(AListenerRegistry, HoldsAListenerOnceHoweverOftenItIsAdded) {
    const Listener listener = added();
    api->addListener(listener);
    ptsEvent();
    EXPECT_EQ(listener->calls().size(), 1U);
    api->removeListener(listener);
    ptsEvent();
    EXPECT_EQ(listener->calls().size(), 1U);
}

TEST_F(AListenerRegistry, SharesTheOwnershipOfItsListeners) {
    Listener listener = std::make_shared<RecordingListener>();
    const std::weak_ptr<RecordingListener> observed = listener;
    api->addListener(listener);
    RecordingListener* const raw = listener.get();
    listener.reset();
    EXPECT_FALSE(observed.expired());
    api->removeListener(observed.lock());
    EXPECT_TRUE(observed.expired());
    EXPECT_NE(raw, nullptr);
}

TEST_F(AListenerRegistry, TakesTheRemovalOfAStrangerWithoutEffect) {
    const Listener listener = added();
    api->removeListener(make());
    ptsEvent();
    EXPECT_EQ(listener->calls().size(), 1U);
}

TEST_F(AListenerRegistry, AcceptsANullListenerAndPassesItOver) {
    const Listener first = added();
    api->addListener(nullptr);
    api->addListener(nullptr);
    const Listener last = added();
    ptsEvent();
    EXPECT_EQ(first->calls().size(), 1U);
    EXPECT_EQ(last->calls().size(), 1U);
}

TEST_F(AListenerRegistry, CallsInOrderOfRegistration) {
    std::vector<int> order;
    const Listener first = added();
    const Listener second = added();
    first->reaction = [&order] { order.push_back(1); };
    second->reaction = [&order] { order.push_back(2); };
    ptsEvent();
    EXPECT_THAT(order, testing::ElementsAre(1, 2));
}

TEST_F(AListenerRegistry, IsFineWithNobodyInIt) {
    ptsEvent();
}

TEST_F(AListenerRegistry, LetsAListenerRemoveItselfFromInsideItsCall) {
    const Listener leaving = added();
    const Listener staying = added();
    leaving->reaction = [&] { api->removeListener(leaving); };
    ptsEvent();
    ptsEvent();
    EXPECT_EQ(leaving->calls().size(), 1U);
    EXPECT_EQ(staying->calls().size(), 2U);
}

TEST_F(AListenerRegistry, StillTellsAListenerThatIsRemovedDuringTheEvent) {
    const Listener first = added();
    const Listener second = added();
    first->reaction = [&] { api->removeListener(second); };
    ptsEvent();
    EXPECT_EQ(second->calls().size(), 1U);
    first->reaction = nullptr;
    ptsEvent();
    EXPECT_EQ(second->calls().size(), 1U);
}

TEST_F(AListenerRegistry, TellsAListenerThatIsAddedDuringAnEventOfTheNextOne) {
    const Listener first = added();
    const Listener late = make();
    first->reaction = [&] { api->addListener(late); };
    ptsEvent();
    EXPECT_TRUE(late->calls().empty());
    first->reaction = nullptr;
    ptsEvent();
    EXPECT_EQ(late->calls().size(), 1U);
}

TEST_F(AListenerRegistry, LetsAListenersExceptionEndTheFanOut) {
    const Listener throwing = added();
    const Listener behind = added();
    throwing->reaction = [] { throw std::runtime_error("listener"); };
    EXPECT_THROW(velmora::dvbservice::BrowserDvbAPI::getInstance()->onPtsNotify(1, 2), std::runtime_error);
    EXPECT_EQ(throwing->calls().size(), 1U);
    EXPECT_TRUE(behind->calls().empty());
    throwing->reaction = nullptr;
    ptsEvent();
    EXPECT_EQ(behind->calls().size(), 1U);
}

TEST_F(AListenerRegistry, KeepsTheAitTripletForTheSectionsThatFollow) {
    const Listener listener = added();
    const auto u16 = [](int value) { return static_cast<unsigned short>(value); };
    injectEvent<messages::OnAitChannelInfoUpdated>(static_cast<short>(-7), u16(1), u16(1025), u16(28106));
    EXPECT_THAT(recording::logOf("onAITChannelInfoChanged"),
                testing::ElementsAre(logged::tagged(0x5F0FA0, "B-LOG", kFile, "onAITChannelInfoChanged",
                                                    "New AIT ChannelInfo: 1,1025,28106\n")));
    EXPECT_THAT(logged::traces(), testing::Contains(std::string("[TRACE] ") + kFile + ":onAITChannelInfoChanged\n"));
    recording::reset();
    injectEvent<messages::OnServiceChanged>("service_started", "9:9:9");
    injectEvent<messages::OnAitSectionAvailable>("ait");
    EXPECT_THAT(recording::logOf("onAITSectionUpdated"),
                testing::ElementsAre(logged::tagged(0x5F0FA0, "B-LOG", kFile, "onAITSectionUpdated",
                                                    "New AIT Section: 1,1025,28106, len: 3\n")));
    EXPECT_THAT(listener->calls(), testing::ElementsAre("onAITChannelInfoChanged()", "OnChannelChanged(1, 9, 9, 9)",
                                                        "onAITSectionUpdated(1, 1025, 28106, 3:616974)"));
}
