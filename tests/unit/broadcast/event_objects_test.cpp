// Tests of the names of stream events that are read from carousels.
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

/// Repeats the sections as a carousel does, often enough to read everything.
void play(EventObjects& objects, const std::vector<Section>& sections) {
    constexpr int kRounds = 4;
    for (int round = 0; round < kRounds; ++round) {
        feed(objects, sections);
    }
}

/// The DownloadServerInitiate with another object as the service gateway.
Section withAnotherGateway(const Section& initiate) {
    for (std::size_t at = initiate.size(); at-- > 0;) {
        Section changed = initiate;
        changed[at] ^= 1U;
        const auto gateway = si::serviceGateway(changed);
        if (gateway && !(*gateway == *si::serviceGateway(initiate))) {
            return changed;
        }
    }
    return {};
}

/// The bytes after the header, without CRC_32.
std::string contentsOf(tsmake::SectionWriter& writer) {
    constexpr std::ptrdiff_t kHeader = 8;
    constexpr std::ptrdiff_t kCrc = 4;
    const Section section = writer.finish();
    return {section.begin() + kHeader, section.end() - kCrc};
}

/// The description of the stream in a stream event object.
struct StreamInfo {
    std::size_t microsecondsWidth;
    std::string media;        // whether there are audio, video and data
    std::string privateData;  // after the names
};

/// A stream event object with the names of events 1, 2, .... Some broadcasters write the microseconds of the duration
/// in four bytes instead of two.
Bytes streamEventObject(const StreamInfo& info, const std::vector<std::string>& names) {
    tsmake::SectionWriter named(0, 0, 0);
    named.u8(0)
        .u32(0)
        .text(std::string(info.microsecondsWidth, '\0') + info.media)
        .u16(static_cast<unsigned int>(names.size()));
    tsmake::SectionWriter identifiers(0, 0, 0);
    identifiers.text(std::string("\x01\x00\x00\x00\x0D\x00\x13\x00", 8)).u8(static_cast<unsigned int>(names.size()));
    unsigned int id = 0;
    for (const std::string& name : names) {
        named.lengthText(name + '\0');
        identifiers.u16(++id);
    }
    named.text(info.privateData);
    const std::string infoText = contentsOf(named);
    const std::string body = contentsOf(identifiers);
    tsmake::SectionWriter message(0, 0, 0);
    message.lengthText("\x01").u32(4).text(std::string("ste\0", 4));
    message.u16(static_cast<unsigned int>(infoText.size())).text(infoText).u8(0);
    message.u32(static_cast<std::uint32_t>(body.size())).text(body);
    const std::string messageText = contentsOf(message);
    tsmake::SectionWriter object(0, 0, 0);
    object.text(std::string("BIOP\x01\x00\x00\x00", 8))
        .u32(static_cast<std::uint32_t>(messageText.size()))
        .text(messageText);
    const std::string text = contentsOf(object);
    return {text.begin(), text.end()};
}

const std::string kData("\0\0\x01", 3);  // only data, no audio or video

Bytes objectWithLongDuration() {
    return streamEventObject({4, std::string(3, '\0'), ""}, {"goal", "testevent"});
}

std::vector<si::CarouselObject> eventObjectsIn(const Bytes& module) {
    std::vector<si::CarouselObject> objects;
    si::eventObjects(module, [&objects](si::CarouselObject object) { objects.push_back(std::move(object)); });
    return objects;
}

/// "name=id" of each event of the only object.
std::vector<std::string> eventsOf(const Bytes& module) {
    std::vector<std::string> events;
    for (const si::CarouselObject& object : eventObjectsIn(module)) {
        for (const si::CarouselObject::EventName& event : object.events) {
            events.push_back(event.name + "=" + std::to_string(event.id));
        }
    }
    return events;
}

}  // namespace

TEST(EventNames, AreReadFromACarousel) {
    EventObjects objects({kPid});
    play(objects, tsmake::carouselSections(football()));
    EXPECT_TRUE(objects.isComplete());
    EXPECT_THAT(namesOf(objects), testing::ElementsAre("events/football:foul=6@7", "events/football:goal=5@7"));
    EXPECT_EQ(objects.events()[0].carouselPid, kPid);
}

TEST(EventNames, AreIncompleteUntilEveryCarouselIsRead) {
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

TEST(EventNames, DoNotDependOnTheOrderOfModules) {
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

TEST(EventNames, AreIgnoredAboveTheLimit) {
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
    // There is room for one version of the module, but not for two.
    constexpr std::size_t kLimit = 1500;
    EventObjects objects({kPid}, kLimit);
    for (std::uint16_t round = 0; round < 20; ++round) {
        tsmake::StreamEvents events = football();
        std::string name(1U + 2U * round, '0');
        std::iota(name.begin(), name.end(), '0');  // gives the compressed module another size
        events.events = {{round, name, "", 0}};
        play(objects, tsmake::carouselSections(events));
        ASSERT_FALSE(objects.hasPassedOver()) << round;
        ASSERT_EQ(objects.events().size(), 1U);
        EXPECT_EQ(objects.events()[0].eventId, round);
    }
}

TEST(EventNames, AreSearchedNoMoreThanTheBytesAllow) {
    tsmake::StreamEvents many;
    for (std::uint16_t id = 0; id < 255; ++id) {
        many.events.push_back({id, "event" + std::to_string(id), "", 0});
    }
    many.object = std::string(250, 'd') + "/" + std::string(250, 'e') + "/object";
    const std::vector<Section> sections = tsmake::carouselSections(many);
    EventObjects objects({kPid});
    play(objects, sections);
    ASSERT_EQ(objects.events().size(), 255U);
    const std::uint64_t before = objects.searches();
    constexpr int kRounds = 1000;
    for (int round = 0; round < kRounds; ++round) {
        objects.onSection(kPid, withAnotherGateway(sections[0]));
        objects.onSection(kPid, sections[0]);
    }
    EXPECT_LT(objects.searches() - before, kRounds / 4U);
    for (int round = 0; round < kRounds && !objects.isComplete(); ++round) {
        feed(objects, sections);
    }
    EXPECT_TRUE(objects.isComplete());
    EXPECT_EQ(objects.events().size(), 255U);
    EXPECT_THAT(objects.placesOf("event7"), testing::SizeIs(1));
    EXPECT_THAT(objects.placesOf("event"), testing::IsEmpty());
}

TEST(EventNames, AreNotReadFromAModuleThatGrowsTooMuch) {
    std::vector<Section> sections = tsmake::carouselSections(football());
    const Section sizeDescriptor = {0x09, 0x05, 0x08};
    const auto at = std::search(sections[1].begin(), sections[1].end(), sizeDescriptor.begin(), sizeDescriptor.end());
    ASSERT_NE(at, sections[1].end());
    at[4] = 1;  // a byte of the size: some hundred bytes become more than 65,536
    EventObjects objects({kPid});
    play(objects, sections);
    EXPECT_THAT(namesOf(objects), testing::IsEmpty());
    EXPECT_FALSE(objects.isComplete());
}

TEST(EventNames, MayFollowALongDuration) {
    EXPECT_THAT(eventsOf(objectWithLongDuration()), testing::ElementsAre("goal=1", "testevent=2"));
    EXPECT_THAT(eventObjectsIn(objectWithLongDuration()).at(0).associationTags, testing::ElementsAre(0x13));
}

TEST(EventNames, LeaveTheFewestBytesUnread) {
    // If this object is read with the short duration, its video and data bytes look like a count of one name, and the
    // first byte of the real count looks like the name's length.
    EXPECT_THAT(eventsOf(streamEventObject({4, kData, ""}, {"goal"})), testing::ElementsAre("goal=1"));
    EXPECT_THAT(eventsOf(streamEventObject({2, kData, ""}, {"goal"})), testing::ElementsAre("goal=1"));
}

TEST(EventNames, MayPrecedePrivateData) {
    for (const std::size_t width : {std::size_t{2}, std::size_t{4}}) {
        EXPECT_THAT(eventsOf(streamEventObject({width, kData, "private"}, {"goal"})), testing::ElementsAre("goal=1"))
            << width;
        EXPECT_THAT(eventsOf(streamEventObject({width, kData, std::string(9, '\0')}, {"goal", "foul"})),
                    testing::ElementsAre("goal=1", "foul=2"))
            << width;
    }
}

TEST(EventNames, AreNotReadFromCutObjects) {
    const Bytes object = objectWithLongDuration();
    for (std::size_t size = 0; size < object.size(); ++size) {
        EXPECT_THAT(eventObjectsIn(Bytes(object.begin(), object.begin() + static_cast<std::ptrdiff_t>(size))),
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
