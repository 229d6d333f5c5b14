// The listeners: their registry, and the delivery of events.
#include "facade_fixture.h"
#include "waits_for_lock.h"

namespace velmora::dvbservice {

/// Gives tests access to the DVB API's private members.
struct BrowserDvbAPITestAccess {
    static boost::recursive_mutex& listenersMutex(BrowserDvbAPI& api) { return api.listenersMutex; }
    static std::size_t count(BrowserDvbAPI& api) {
        const locks::Lock lock(api.listenersMutex);
        return api.listeners->size();
    }
};

}  // namespace velmora::dvbservice

namespace {

using velmora::dvbservice::BrowserDvbAPI;
using velmora::dvbservice::BrowserDvbAPITestAccess;

using Listener = std::shared_ptr<RecordingListener>;

/// Registers listeners for the duration of a test.
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
        Listener listener = make();
        api->addListener(listener);
        return listener;
    }
    static BrowserDvbAPI& own() { return *BrowserDvbAPI::getInstance(); }
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
    EXPECT_EQ(BrowserDvbAPITestAccess::count(own()), 2U) << "once, as any other";
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

TEST_F(AListenerRegistry, KeepsTheOrderOfTheOthersAfterARemoval) {
    std::vector<int> order;
    const std::vector<Listener> four = {added(), added(), added(), added()};
    for (int index = 0; index < 4; ++index) {
        four[static_cast<std::size_t>(index)]->reaction = [&order, index] { order.push_back(index); };
    }
    api->removeListener(four[1]);
    ptsEvent();
    EXPECT_THAT(order, testing::ElementsAre(0, 2, 3));
    order.clear();
    api->addListener(four[1]);
    api->removeListener(four[0]);
    ptsEvent();
    EXPECT_THAT(order, testing::ElementsAre(2, 3, 1)) << "a listener that comes back stands at the end";
}

TEST_F(AListenerRegistry, TellsListenersApartByTheirAddress) {
    // Two listeners with equal values.
    const Listener first = added();
    const Listener second = added();
    EXPECT_EQ(BrowserDvbAPITestAccess::count(own()), 2U);
    // The same listener with another owner.
    api->addListener(std::shared_ptr<RecordingListener>(first.get(), [](RecordingListener*) {}));
    EXPECT_EQ(BrowserDvbAPITestAccess::count(own()), 2U);
    api->removeListener(std::shared_ptr<RecordingListener>(second.get(), [](RecordingListener*) {}));
    ptsEvent();
    EXPECT_EQ(first->calls().size(), 1U);
    EXPECT_TRUE(second->calls().empty());
}

TEST_F(AListenerRegistry, IsOpenToOtherThreadsDuringACall) {
    const Listener first = added();
    const Listener late = make();
    std::future<void> other;
    bool changed = false;
    first->reaction = [&] {
        other = std::async(std::launch::async, [&] {
            api->addListener(late);
            api->removeListener(late);
        });
        changed = isReady(other);
    };
    ptsEvent();
    EXPECT_TRUE(changed) << "the lock is held during the call";
}

TEST_F(AListenerRegistry, LocksForChangesAndForTheCopy) {
    const Listener listener = added();
    boost::recursive_mutex& mutex = BrowserDvbAPITestAccess::listenersMutex(own());
    EXPECT_TRUE(waitsForLock(mutex, [&] { api->addListener(listener); }));
    EXPECT_TRUE(waitsForLock(mutex, [&] { api->removeListener(listener); }));
    EXPECT_TRUE(waitsForLock(mutex, [&] { own().onAllTerminalStoped(); }));
    EXPECT_TRUE(isFree(mutex));
}

TEST_F(AListenerRegistry, KeepsAReleasedListenerUntilItsCallEnds) {
    struct Mourned : RecordingListener {
        explicit Mourned(std::vector<std::string>& newStory) : story(newStory) {}
        ~Mourned() override { story.emplace_back("released"); }
        void onPtsNotify(std::uint64_t, std::uint64_t) override { story.emplace_back("called"); }
        std::vector<std::string>& story;
    };
    std::vector<std::string> story;
    const Listener first = added();
    std::shared_ptr<Mourned> released = std::make_shared<Mourned>(story);
    api->addListener(released);
    first->reaction = [&] {
        api->removeListener(released);
        released.reset();
    };
    ptsEvent();
    EXPECT_THAT(story, testing::ElementsAre("called", "released"));
}

TEST_F(AListenerRegistry, ReleasesItsListenersWhenItGoes) {
    std::weak_ptr<RecordingListener> observed;
    {
        BrowserDvbAPI passing;
        const auto listener = std::make_shared<RecordingListener>();
        observed = listener;
        passing.addListener(listener);
        recording::reset();
    }
    EXPECT_TRUE(recording::log().empty());
    EXPECT_TRUE(observed.expired());
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

TEST_F(AListenerRegistry, CallsARemovedListenerOnceMoreDuringAnEvent) {
    const Listener first = added();
    const Listener second = added();
    first->reaction = [&] { api->removeListener(second); };
    ptsEvent();
    EXPECT_EQ(second->calls().size(), 1U);
    first->reaction = nullptr;
    ptsEvent();
    EXPECT_EQ(second->calls().size(), 1U);
}

TEST_F(AListenerRegistry, CallsAnAddedListenerFromTheNextEventOn) {
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

TEST_F(AListenerRegistry, StoresTheAitTripletBeforeListenersHearOfIt) {
    const Listener listener = added();
    listener->reaction = [&] {
        listener->reaction = nullptr;
        own().onAITSectionUpdated("");
    };
    own().onAITChannelInfoChanged(0, 1, 1025, 28106);
    EXPECT_THAT(listener->calls(),
                testing::ElementsAre("onAITChannelInfoChanged()", "onAITSectionUpdated(1, 1025, 28106, 0:)"));
}

TEST_F(AListenerRegistry, StoresAnyAitTriplet) {
    const Listener listener = added();
    own().onAITChannelInfoChanged(0, 1, 2, 3);
    own().onAITChannelInfoChanged(1, 0, 0, 0);
    own().onAITSectionUpdated("");
    EXPECT_EQ(listener->calls().back(), "onAITSectionUpdated(0, 0, 0, 0:)");
    own().onAITChannelInfoChanged(-1, 65535, 65534, 65533);
    own().onAITSectionUpdated("");
    EXPECT_EQ(listener->calls().back(), "onAITSectionUpdated(65535, 65534, 65533, 0:)");
}

TEST_F(AListenerRegistry, ReadsTheAitTripletAnewForEachListener) {
    own().onAITChannelInfoChanged(0, 1, 2, 3);
    const Listener first = added();
    const Listener second = added();
    first->reaction = [&] {
        first->reaction = nullptr;
        own().onAITChannelInfoChanged(0, 4, 5, 6);
    };
    own().onAITSectionUpdated("s");
    EXPECT_THAT(first->calls(),
                testing::ElementsAre("onAITSectionUpdated(1, 2, 3, 1:73)", "onAITChannelInfoChanged()"));
    EXPECT_THAT(second->calls(),
                testing::ElementsAre("onAITChannelInfoChanged()", "onAITSectionUpdated(4, 5, 6, 1:73)"));
}

TEST_F(AListenerRegistry, PassesItsOwnTextWhereListenersTakeAReference) {
    struct Looking : RecordingListener {
        void onAITSectionUpdated(std::uint16_t, std::uint16_t, std::uint16_t, const std::string& section) override {
            seen.push_back(&section);
        }
        void onDrmResultReply(std::uint64_t, std::uint8_t, const std::string& message, std::uint16_t) override {
            seen.push_back(&message);
        }
        std::vector<const std::string*> seen;
    };
    const auto looking = std::make_shared<Looking>();
    const std::string text = "text";
    api->addListener(looking);
    own().onAITSectionUpdated(text);
    own().onDrmResultReply(1, 2, text, 3);
    api->removeListener(looking);
    EXPECT_THAT(looking->seen, testing::ElementsAre(&text, &text));
}

TEST_F(AListenerRegistry, CopiesTextsThatListenersTakeByValue) {
    struct Spoiling : RecordingListener {
        void onPMTSectionUpdated(std::uint16_t, std::uint16_t, std::uint16_t, int, std::string section) override {
            spoil(section);
        }
        void onEITSectionUpdated(int, std::string section) override { spoil(section); }
        void onDATagsServicePmtSectionUpdated(std::uint16_t, std::uint16_t, std::uint16_t, int,
                                              std::string section) override {
            spoil(section);
        }
        void spoil(std::string& section) {
            heard += section;
            section.assign("spoiled");
        }
        std::string heard;
    };
    const std::vector<std::shared_ptr<Spoiling>> both = {std::make_shared<Spoiling>(), std::make_shared<Spoiling>()};
    const std::string text = "text";
    for (const auto& listener : both) {
        api->addListener(listener);
    }
    own().onPMTSectionUpdated(1, 2, 3, 4, text);
    own().onEITSectionUpdated(1, text);
    own().onDATagsServicePmtSectionUpdated(1, 2, 3, 4, text);
    for (const auto& listener : both) {
        api->removeListener(listener);
        EXPECT_EQ(listener->heard, "texttexttext");
    }
}

TEST_F(AListenerRegistry, LogsItsLinesBeforeListenersAreCalled) {
    const Listener listener = added();
    std::vector<std::string> before;
    listener->reaction = [&before] { before = logged::story(); };
    const auto linesOf = [&before](const auto& event) {
        recording::reset();
        event();
        EXPECT_EQ(logged::story(), before) << "nothing is written after the calls";
        return before;
    };
    EXPECT_THAT(linesOf([] { own().OnChannelChanged(true, 1, 2, 3); }),
                testing::ElementsAre("[TRACE] OnChannelChanged"));
    EXPECT_THAT(linesOf([] { own().onAITChannelInfoChanged(-1, 65535, 2, 3); }),
                testing::ElementsAre("[TRACE] onAITChannelInfoChanged",
                                     "onAITChannelInfoChanged: New AIT ChannelInfo: 65535,2,3\n"));
    EXPECT_THAT(linesOf([] { own().onAITSectionUpdated(std::string(70000, 'x')); }),
                testing::ElementsAre("onAITSectionUpdated: New AIT Section: 65535,2,3, len: 70000\n"));
    EXPECT_TRUE(linesOf([] { own().onSelectedComponentChanged(1, 2, 3, 4, 5, 6); }).empty());
    EXPECT_TRUE(linesOf([] { own().onComponentInfoChanged(1, 2, 3, 4, 5, 6, 7, 8, 9, 10); }).empty());
    EXPECT_TRUE(linesOf([] { own().onHbbTVEngineStatusChanged(velmora::dtv::HbbTVEngineStatus{1}); }).empty());
    EXPECT_TRUE(linesOf([] { own().onPMTSectionUpdated(1, 2, 3, 4, ""); }).empty());
    EXPECT_TRUE(linesOf([] { own().onEITSectionUpdated(1, ""); }).empty());
    EXPECT_TRUE(linesOf([] { own().onTimelineInfoDataChange(1, 2, 3, 4, 5, 6); }).empty());
    EXPECT_TRUE(linesOf([] { own().onAllTerminalStoped(); }).empty());
    EXPECT_TRUE(linesOf([] { own().onPtsNotify(1, 2); }).empty());
    EXPECT_TRUE(linesOf([] { own().onOSDStateChanged(1, 2); }).empty());
    EXPECT_TRUE(linesOf([] { own().onDrmResultReply(1, 2, "", 3); }).empty());
    EXPECT_TRUE(linesOf([] { own().onCaDrmConnected(1, 2, 3); }).empty());
    EXPECT_TRUE(linesOf([] { own().onCaDrmDisonnected(1, 2); }).empty());
    EXPECT_TRUE(linesOf([] { own().onCaDrmSystemStatusChanged(1, 2); }).empty());
    EXPECT_TRUE(linesOf([] { own().onDATagsServicePmtSectionUpdated(1, 2, 3, 4, ""); }).empty());
    EXPECT_EQ(listener->calls().size(), 17U);
}
