// Tests of the EIT: descriptors of events, and the schedule.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "si/components.h"
#include "si/tables.h"
#include "tables.h"

namespace {

using tsmake::Event;
using tsmake::Multiplex;
using tsmake::Section;
using tsmake::Service;

constexpr unsigned int kHour = 3600;

Service serviceOf(const std::vector<Event>& events) {
    Service service;
    service.serviceId = 5;
    service.events = events;
    return service;
}

Event eventOf(std::uint16_t id, unsigned int duration, std::size_t textSize = 0) {
    Event event;
    event.eventId = id;
    event.text = std::string(textSize, 'x');
    event.duration = duration;
    return event;
}

/// The events of each section, as "table/section: id id ...".
std::vector<std::string> scheduleOf(const Multiplex& multiplex, const Service& service) {
    std::vector<std::string> lines;
    for (const Section& section : tsmake::eitScheduleSections(multiplex, service)) {
        std::string error;
        const std::optional<si::Eit> eit = si::parseEit(section, error);
        EXPECT_TRUE(eit) << error;
        std::string line = std::to_string(eit->tableId) + "/" + std::to_string(eit->sectionNumber) + ":";
        for (const si::Eit::Event& event : eit->events) {
            line += " " + std::to_string(event.eventId);
        }
        lines.push_back(line);
    }
    return lines;
}

}  // namespace

TEST(AnEvent, HasItsDescriptors) {
    Event event = eventOf(1, kHour);
    event.components = {{5, 11, 1, "", "HD"}, {2, 3, 2, "fra", ""}};
    event.ratings = {{"FRA", 9}, {"DEU", 3}};
    event.descriptors = std::string("\x5F\x04\x00\x00\x00\x01", 6);
    const Section section = tsmake::eitSection({}, serviceOf({event}), false);
    const si::Descriptors descriptors = si::firstEventDescriptors(section);
    ASSERT_EQ(descriptors.size(), 5U);
    EXPECT_EQ(descriptors[0].tag, 0x4D);
    EXPECT_EQ(descriptors[1].tag, 0x50);
    EXPECT_THAT(descriptors[1].bytes, testing::ElementsAre(0xF5, 11, 1, 'e', 'n', 'g', 'H', 'D'));
    EXPECT_THAT(descriptors[2].bytes, testing::ElementsAre(0xF2, 3, 2, 'f', 'r', 'a'));
    EXPECT_EQ(descriptors[3].tag, 0x55);
    EXPECT_THAT(descriptors[3].bytes, testing::ElementsAre('F', 'R', 'A', 9, 'D', 'E', 'U', 3));
    EXPECT_EQ(descriptors[4].tag, 0x5F);
    EXPECT_THAT(descriptors[4].bytes, testing::ElementsAre(0, 0, 0, 1));
}

TEST(ASchedule, HasItsEventsInSegmentsOfThreeHours) {
    Multiplex multiplex;
    multiplex.start = si::UtcSeconds{7} * kHour;  // 1970-01-01 07:00, in the third segment of the day
    const Service service = serviceOf({eventOf(1, kHour), eventOf(2, kHour), eventOf(3, 4 * kHour), eventOf(4, kHour)});
    EXPECT_THAT(scheduleOf(multiplex, service),
                testing::ElementsAre("80/0:", "80/8:", "80/16: 1 2", "80/24: 3", "80/32: 4"));
}

TEST(ASchedule, GoesOnInTheNextTable) {
    Multiplex multiplex;
    const Service service = serviceOf({eventOf(1, 86400), eventOf(2, 3 * 86400), eventOf(3, kHour)});
    const std::vector<std::string> schedule = scheduleOf(multiplex, service);
    ASSERT_EQ(schedule.size(), 33U);
    EXPECT_EQ(schedule[0], "80/0: 1");
    EXPECT_EQ(schedule[8], "80/64: 2");
    EXPECT_EQ(schedule[31], "80/248:");
    EXPECT_EQ(schedule[32], "81/0: 3");
    const Section last = tsmake::eitScheduleSections(multiplex, service).back();
    constexpr std::size_t kLastTable = 13;
    EXPECT_EQ(last[kLastTable], 0x51);
}

TEST(ASchedule, FillsTheSectionsOfASegmentOneAfterTheOther) {
    std::vector<Event> events;
    for (std::uint16_t id = 0; id < 200; ++id) {
        events.push_back(eventOf(id, 1, 200));
    }
    const std::vector<Section> sections = tsmake::eitScheduleSections({}, serviceOf(events));
    ASSERT_EQ(sections.size(), 8U) << "a segment has room for no more";
    EXPECT_EQ(si::lastSectionNumber(sections[0]), 7);
    constexpr std::size_t kSegmentLast = 12;
    EXPECT_EQ(sections[3][kSegmentLast], 7);
}
