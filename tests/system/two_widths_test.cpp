// A 32-bit browser and a 64-bit service on one socket. Skipped without a service of the other width.
#include <set>

#include "browser_fixture.h"
#include "message_fields.h"

namespace {

class ABrowserOfTheOtherWidth : public ABrowser {
protected:
    void SetUp() override {
        if (access(kService, X_OK) != 0) {
            GTEST_SKIP() << "no service of the other width was built; ./run test --preset tv-arm has one";
        }
    }

    static constexpr const char* kService = OTHER_WIDTH_SERVICE;
    /// The kinds of events with the expected values and bytes of a service, each once, in any order.
    std::set<EventKind> eventsOf(const tsmake::Service& service) {
        std::set<EventKind> came;
        const auto end = dvbshell::Clock::now() + std::chrono::seconds(20);
        while (came.size() < 4) {
            const std::optional<Event> event = queue.take(end);
            if (!event) {
                break;
            }
            const bool ofService = event->sid == service.serviceId && event->onid == 1 && event->tsid == 1025;
            if ((event->kind == EventKind::channel && event->started && ofService) ||
                event->kind == EventKind::aitChannel ||
                (event->kind == EventKind::pmt && event->section == asText(tsmake::pmtSection(service))) ||
                (event->kind == EventKind::ait && event->section == asText(tsmake::aitSection(service)))) {
                came.insert(event->kind);
            }
        }
        return came;
    }
    static ServiceProcess start() { return ServiceProcess({SAMPLE_FILE}, kService, Runner::machine); }
};

}  // namespace

TEST_F(ABrowserOfTheOtherWidth, GetsTheSameEvents) {
    const ServiceProcess service = start();
    ASSERT_TRUE(connected());
    for (const tsmake::Service& of : {kSample.services[0], kSample.services[1]}) {
        ASSERT_TRUE(tunesTo(of.serviceId));
        EXPECT_THAT(eventsOf(of),
                    testing::ElementsAre(EventKind::channel, EventKind::aitChannel, EventKind::pmt, EventKind::ait));
    }
    EXPECT_EQ(api->setAudioSource("broadcast"), 0) << "the command's record and the answer's";
}

TEST_F(ABrowserOfTheOtherWidth, GetsTheSectionsOfAFilter) {
    const ServiceProcess service = start();
    ASSERT_TRUE(connected());
    ChildProcess shell(DVBSHELL, {"sections", "0", "--count", "2", "--hex", "--seconds", "60"}, "shell");
    EXPECT_EQ(shell.wait(), 0);
    const std::string pat = message_fields::hexadecimal(asText(tsmake::patSection(kSample))) + "\n";
    EXPECT_EQ(shell.output(), pat + pat);
}
