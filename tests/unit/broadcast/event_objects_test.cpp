// Names of stream events, read from carousels.
#include "event_objects.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>

#include "carousel.h"
#include "packets.h"

namespace {

using broadcast::EventObjects;
using tsmake::Section;

constexpr std::uint16_t kPid = 100;

tsmake::StreamEvents football() {
    tsmake::StreamEvents events;
    events.events = {{5, "goal", "", 0}, {6, "foul", "", 0}, {5, "goal", "", 1}};
    events.object = "events/football";
    return events;
}

std::vector<std::string> namesOf(const EventObjects& objects) {
    std::vector<std::string> names;
    for (const EventObjects::Named& event : objects.events()) {
        std::string name = event.path + ":" + event.name + "=" + std::to_string(event.eventId);
        for (const std::uint16_t tag : event.associationTags) {
            name += "@" + std::to_string(tag);
        }
        names.push_back(name);
    }
    return names;
}

void feed(EventObjects& objects, const std::vector<Section>& sections) {
    for (const Section& section : sections) {
        objects.onSection(kPid, section);
    }
}

/// Until nothing new comes of it, as a carousel does.
void play(EventObjects& objects, const std::vector<Section>& sections) {
    constexpr int kRounds = 4;
    for (int round = 0; round < kRounds; ++round) {
        feed(objects, sections);
    }
}

/// A stream event object as some broadcasters write it, with the microseconds in four bytes.
Bytes objectWithLongDuration() {
    const std::string object = std::string("BIOP\x01\x00\x00\x00\x00\x00\x00\x3E", 12) +
                               std::string("\x01\x06\x00\x00\x00\x04ste\x00", 10) + std::string("\x00\x20", 2) +
                               std::string(12, '\0') +
                               std::string(
                                   "\x00\x02\x06"
                                   "badid\x00",
                                   9) +
                               std::string(
                                   "\x0A"
                                   "testevent\x00",
                                   11) +
                               std::string("\x00\x00\x00\x00\x0D", 5) +
                               std::string("\x01\x00\x00\x00\x0D\x00\x13\x00\x02\x00\x02\x00\x01", 13);
    return {object.begin(), object.end()};
}

}  // namespace

TEST(EventNames, AreReadFromACarousel) {
    EventObjects objects({kPid});
    play(objects, tsmake::carouselSections(football()));
    EXPECT_TRUE(objects.isComplete());
    EXPECT_THAT(namesOf(objects), testing::ElementsAre("events/football:foul=6@7", "events/football:goal=5@7"));
    EXPECT_EQ(objects.events()[0].carouselPid, kPid);
}

TEST(EventNames, AreIncompleteUntilEveryCarouselHasBeenLookedThrough) {
    EventObjects objects({kPid, kPid + 1});
    EXPECT_FALSE(objects.isComplete());
    const std::vector<Section> sections = tsmake::carouselSections(football());
    play(objects, {sections.begin(), sections.end() - 1});
    EXPECT_THAT(namesOf(objects), testing::IsEmpty()) << "the last block is missing";
    play(objects, sections);
    EXPECT_EQ(objects.events().size(), 2U);
    EXPECT_FALSE(objects.isComplete()) << "the other carousel has not begun";
}

TEST(EventNames, AreReadAgainWhenTheirModuleChanges) {
    EventObjects objects({kPid});
    play(objects, tsmake::carouselSections(football()));
    tsmake::StreamEvents tennis = football();
    tennis.events = {{9, "ace", "", 0}};
    const std::vector<Section> sections = tsmake::carouselSections(tennis);
    constexpr std::size_t kInfo = 1;
    EXPECT_TRUE(objects.onSection(kPid, sections[kInfo])) << "a module of another size";
    EXPECT_FALSE(objects.isComplete());
    play(objects, sections);
    EXPECT_TRUE(objects.isComplete());
    EXPECT_THAT(namesOf(objects), testing::ElementsAre("events/football:ace=9@7"));
}

TEST(EventNames, AreTheSameInWhateverOrderTheirModulesCome) {
    std::vector<Section> sections = tsmake::carouselSections(football());
    std::mt19937 random(1);  // the same orders in every run
    for (int order = 0; order < 50; ++order) {
        std::shuffle(sections.begin(), sections.end(), random);
        EventObjects objects({kPid});
        play(objects, sections);
        EXPECT_TRUE(objects.isComplete());
        EXPECT_FALSE(objects.hasPassedOver());
        EXPECT_THAT(namesOf(objects), testing::ElementsAre("events/football:foul=6@7", "events/football:goal=5@7"));
    }
}

TEST(EventNames, AboveWhatIsKeptArePassedOver) {
    const std::vector<Section> sections = tsmake::carouselSections(football());
    for (std::size_t limit = 0; limit < 2000; limit += 50) {
        EventObjects objects({kPid}, limit);
        play(objects, sections);
        EXPECT_TRUE(objects.isComplete()) << limit;
        EXPECT_TRUE(objects.hasPassedOver() || objects.events().size() == 2U) << limit;
    }
    EventObjects none({kPid}, 0);
    play(none, sections);
    EXPECT_THAT(namesOf(none), testing::IsEmpty());
    EXPECT_TRUE(none.hasPassedOver());
}

TEST(EventNames, MakeRoomWhenTheirModuleChanges) {
    // Two versions do not fit together.
    constexpr std::size_t kLimit = 1500;
    EventObjects objects({kPid}, kLimit);
    for (std::uint16_t round = 0; round < 20; ++round) {
        tsmake::StreamEvents events = football();
        std::string name(1U + 2U * round, '0');
        std::iota(name.begin(), name.end(), '0');  // so that the compressed module is of another size
        events.events = {{round, name, "", 0}};
        play(objects, tsmake::carouselSections(events));
        ASSERT_FALSE(objects.hasPassedOver()) << round;
        ASSERT_EQ(objects.events().size(), 1U);
        EXPECT_EQ(objects.events()[0].eventId, round);
    }
}

TEST(EventNames, MayStandBehindALongDuration) {
    const std::vector<si::CarouselObject> objects = si::carouselObjects(objectWithLongDuration());
    ASSERT_EQ(objects.size(), 1U);
    ASSERT_EQ(objects[0].events.size(), 2U);
    EXPECT_EQ(objects[0].events[0].name, "badid");
    EXPECT_EQ(objects[0].events[0].id, 2);
    EXPECT_EQ(objects[0].events[1].name, "testevent");
    EXPECT_EQ(objects[0].events[1].id, 1);
    EXPECT_THAT(objects[0].associationTags, testing::ElementsAre(0x13));
}

TEST(EventNames, AreNotReadFromCutObjects) {
    const Bytes object = objectWithLongDuration();
    for (std::size_t size = 0; size < object.size(); ++size) {
        EXPECT_THAT(si::carouselObjects(Bytes(object.begin(), object.begin() + static_cast<std::ptrdiff_t>(size))),
                    testing::IsEmpty())
            << size;
    }
}

TEST(EventNames, SurviveACarouselWithWrongBytes) {
    const std::vector<Section> sections = tsmake::carouselSections(football());
    std::mt19937 random(1);  // the same bytes in every run
    for (int round = 0; round < 2000; ++round) {
        EventObjects objects({kPid});
        std::vector<Section> broken = sections;
        for (int change = 0; change < 3; ++change) {
            Section& section = broken[random() % broken.size()];
            constexpr std::size_t kHeader = 8;
            section[kHeader + random() % (section.size() - kHeader)] = static_cast<std::uint8_t>(random());
        }
        play(objects, broken);
        play(objects, sections);
    }
}
