// Listeners of stream events.
#include "stream_events.h"

#include "carousel.h"
#include "fake_filters.h"
#include "made_tables.h"

using testing::ElementsAre;
using testing::IsEmpty;
using tvbrowser::SectionFilters;
using tvbrowser::StreamEvents;

namespace {

const si::Triplet kHere{1, 1025, 1};
const si::Triplet kElsewhere{1, 1025, 2};

class TheStreamEvents : public testing::Test {
protected:
    TheStreamEvents() {
        service.serviceId = kHere.sid;
        service.streamEvents.pid = 0x300;
        service.streamEvents.object = "events/goals";
        service.streamEvents.carouselPid = 0x301;
        service.streamEvents.events = {{5, "goal", "one", 0}, {6, "foul", "x", 1}, {5, "goal", "two", 2}};
        filters.onConnected();
    }
    void present() {
        events.setService(kHere);
        events.setPmt(pmtOf(tsmake::pmtSection(service)));
        tasks.run();
    }
    void listen(std::uint64_t number, const StreamEvents::Target& target) {
        EXPECT_TRUE(events.add(number, target));
        tasks.run();
    }
    void send(std::size_t event) {
        interface.deliver(0x300, tsmake::streamEventSection(service, event));
        tasks.run();
    }
    void sendCarousel() {
        for (const Section& section : tsmake::carouselSections(service.streamEvents)) {
            interface.deliver(0x301, section);
        }
        tasks.run();
    }
    bool areOpen(std::size_t count) {
        return eventually([&] { return interface.openCount() == count; });
    }
    /// What has been told since the last call: "1 trigger goal 6f6e65"
    std::vector<std::string> told() { return std::exchange(all, {}); }

    FakeFilters& interface = newFakeFilters();
    Tasks tasks;
    tsmake::Service service;
    std::vector<std::string> all;
    SectionFilters filters{interface, tasks.post()};
    StreamEvents events{filters, tasks.post(), [this](const std::string& name, const json& value) {
                            EXPECT_EQ(name, "streamEvent");
                            all.push_back(std::to_string(value["id"].get<int>()) + " " +
                                          value["status"].get<std::string>() + " " + value["name"].get<std::string>() +
                                          " " + value["data"].get<std::string>());
                        }};
};

}  // namespace

TEST_F(TheStreamEvents, AreSignalledOnceForEachVersion) {
    present();
    listen(1, {7, 5, "", ""});
    ASSERT_TRUE(areOpen(1));
    send(0);
    send(0);
    send(1);
    send(2);
    EXPECT_THAT(told(), ElementsAre("1 trigger  6f6e65", "1 trigger  74776f"));
    listen(2, {7, 5, "", ""});
    send(2);
    EXPECT_THAT(told(), ElementsAre("2 trigger  74776f"));
    events.forgetVersions();
    send(2);
    EXPECT_THAT(told(), ElementsAre("1 trigger  74776f", "2 trigger  74776f"));
}

TEST_F(TheStreamEvents, NeedNoFilterWithoutListeners) {
    present();
    listen(1, {7, 5, "", ""});
    ASSERT_TRUE(areOpen(1));
    EXPECT_TRUE(events.remove(1));
    EXPECT_FALSE(events.remove(1));
    tasks.run();
    EXPECT_TRUE(areOpen(0));
}

TEST_F(TheStreamEvents, AreFoundByNameAndThenTheCarouselIsClosed) {
    present();
    listen(1, {std::nullopt, std::nullopt, "/events/goals", "foul"});
    ASSERT_TRUE(areOpen(2));
    ASSERT_TRUE(eventually([&] {
        sendCarousel();
        return interface.openCount() == 1;
    }));
    ASSERT_TRUE(eventually([&] {
        send(1);
        return !all.empty();
    }));
    EXPECT_THAT(told(), ElementsAre("1 trigger foul 78"));
}

TEST_F(TheStreamEvents, OfNoComponentNameOrObjectAreAnError) {
    present();
    listen(1, {9, 5, "", ""});
    listen(2, {std::nullopt, std::nullopt, "events/goals", "offside"});
    listen(3, {std::nullopt, std::nullopt, "events", "goal"});
    listen(4, {7, std::nullopt, "events/goals", "goal"});
    EXPECT_THAT(told(), ElementsAre("1 error  ", "4 error goal "));
    ASSERT_TRUE(areOpen(2));
    ASSERT_TRUE(eventually([&] {
        sendCarousel();
        return all.size() == 2;
    }));
    EXPECT_THAT(told(), ElementsAre("2 error offside ", "3 error goal "));
    EXPECT_TRUE(areOpen(0));
}

TEST_F(TheStreamEvents, RestWhileAnotherServiceIsPresented) {
    listen(1, {7, 5, "", ""});
    present();
    ASSERT_TRUE(areOpen(1));
    send(0);
    events.setService(kElsewhere);
    tasks.run();
    ASSERT_TRUE(areOpen(0));
    events.setPmt(pmtOf(tsmake::pmtSection(kSample.services[0])));
    tasks.run();
    EXPECT_THAT(told(), ElementsAre("1 trigger  6f6e65"));
    present();
    ASSERT_TRUE(areOpen(1));
    send(0);
    send(2);
    EXPECT_THAT(told(), ElementsAre("1 trigger  74776f"));
}

TEST_F(TheStreamEvents, EndWithAnErrorWhenTheirComponentEnds) {
    present();
    listen(1, {7, 5, "", ""});
    service.streamEvents.events.clear();
    events.setPmt(pmtOf(tsmake::pmtSection(service)));
    EXPECT_THAT(told(), ElementsAre("1 error  "));
    EXPECT_TRUE(areOpen(0));
}

TEST_F(TheStreamEvents, OfWrongSectionsAreNotSignalled) {
    present();
    listen(1, {7, 5, "", ""});
    ASSERT_TRUE(areOpen(1));
    Section wrong = tsmake::streamEventSection(service, 0);
    wrong.back() ^= 1U;
    interface.deliver(0x300, wrong);
    tasks.run();
    EXPECT_THAT(told(), IsEmpty());
}

TEST_F(TheStreamEvents, HaveALimitedNumberOfListeners) {
    present();
    for (std::uint64_t number = 0; number < StreamEvents::kMostListeners; ++number) {
        EXPECT_TRUE(events.add(number, {7, 5, "", ""}));
    }
    EXPECT_FALSE(events.add(StreamEvents::kMostListeners, {7, 5, "", ""}));
    EXPECT_TRUE(events.add(0, {7, 6, "", ""}));
}
