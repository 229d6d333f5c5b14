// Present and following programmes, and the schedule.
#include "made_tables.h"
#include "present_programmes.h"
#include "schedule.h"

using testing::ElementsAre;
using tvbrowser::PresentProgrammes;
using tvbrowser::Schedule;

namespace {

const si::Triplet kFirst{1, 1025, 28106};

/// An event of an hour; it starts this many hours after 2026-01-01 00:00.
struct Event {
    unsigned int id;
    unsigned int hour;
};

/// A section of an EIT of service 28106.
struct Eit {
    unsigned int table = 0x50;
    unsigned int version = 0;
    unsigned int number = 0;
    unsigned int last = 0;
    unsigned int segmentLast = 0;

    Section with(const std::vector<Event>& events) const {
        SectionWriter writer(static_cast<std::uint8_t>(table), kFirst.sid, static_cast<std::uint8_t>(version),
                             static_cast<std::uint8_t>(number), static_cast<std::uint8_t>(last));
        writer.u16(kFirst.tsid).u16(kFirst.onid).u8(segmentLast).u8(table);
        for (const Event& event : events) {
            writer.u16(event.id).u16(0xEE71).u8(event.hour / 10 << 4U | event.hour % 10).u16(0);
            writer.u8(1).u16(0).open12(8).openDescriptor(0x4D).text("eng").lengthText("E").lengthText("").close();
            writer.close();
        }
        return writer.finish();
    }
};

std::vector<int> idsOf(const json& programmes) {
    std::vector<int> ids;
    for (const json& programme : programmes) {
        ids.push_back(programme["eventId"]);
    }
    return ids;
}

std::vector<int> idsOf(const Schedule& schedule) {
    return idsOf(schedule.value(std::nullopt, {}));
}

/// With sections without events, which take memory too, up to the limit.
void fill(Schedule& schedule) {
    for (unsigned int service = 0; service <= Schedule::kMost; ++service) {
        SectionWriter writer(0x50, static_cast<std::uint16_t>(service), 0);
        schedule.add(writer.u16(1).u16(1).u8(0).u8(0x50).finish());
    }
}

}  // namespace

TEST(ThePresentProgrammes, AreThoseOfThePresentedService) {
    PresentProgrammes programmes;
    programmes.clear(kFirst);
    std::string error;
    EXPECT_TRUE(programmes.add(tsmake::eitSection(kSample, kSample.services[0], false), error));
    EXPECT_TRUE(programmes.add(tsmake::eitSection(kSample, kSample.services[0], true), error));
    EXPECT_FALSE(programmes.add(tsmake::eitSection(kSample, kSample.services[0], true), error));
    EXPECT_FALSE(programmes.add(tsmake::eitSection(kSample, kSample.services[1], false), error));
    EXPECT_THAT(idsOf(programmes.value()), ElementsAre(1001, 1002));
    EXPECT_EQ(programmes.value()[0]["name"], "Morning on the Lake");
    EXPECT_EQ(programmes.value()[0]["startTime"], 1767258000);
    programmes.clear(si::Triplet{1, 1025, 28107});
    EXPECT_EQ(programmes.value(), json::array());
}

TEST(ThePresentProgrammes, NameAnEventOnceWhileTheSectionsChange) {
    PresentProgrammes programmes;
    programmes.clear(kFirst);
    std::string error;
    programmes.add(Eit{0x4E, 0, 0, 1}.with({{1, 9}}), error);
    programmes.add(Eit{0x4E, 0, 1, 1}.with({{2, 10}}), error);
    programmes.add(Eit{0x4E, 1, 0, 1}.with({{2, 10}}), error);
    EXPECT_THAT(idsOf(programmes.value()), ElementsAre(2));
    programmes.add(Eit{0x4E, 1, 1, 1}.with({{3, 11}}), error);
    EXPECT_THAT(idsOf(programmes.value()), ElementsAre(2, 3));
}

TEST(ThePresentProgrammes, LeaveABadSectionOutAndSayWhy) {
    PresentProgrammes programmes;
    std::string error;
    Section wrong = Eit{0x4E}.with({{1, 9}});
    wrong.back() ^= 1U;
    EXPECT_FALSE(programmes.add(wrong, error));
    EXPECT_EQ(error, "EIT section: wrong CRC_32");
}

TEST(ASchedule, ListsEventsByTheirStart) {
    Schedule schedule;
    schedule.add(Eit{0x51}.with({{5, 20}}));
    schedule.add(Eit{0x50, 0, 0, 8}.with({{2, 4}, {1, 3}}));
    schedule.add(Eit{0x50, 0, 8, 8, 8}.with({{3, 5}}));
    EXPECT_TRUE(schedule.takeNews());
    EXPECT_FALSE(schedule.takeNews());
    EXPECT_THAT(idsOf(schedule), ElementsAre(1, 2, 3, 5));
    EXPECT_EQ(schedule.value(si::Triplet{1, 1025, 1}, {}), json::array());
    EXPECT_EQ(schedule.value(kFirst, {}).size(), 4U);
}

TEST(ASchedule, CountsAnEventOnceAndThePresentOneFirst) {
    Schedule schedule;
    schedule.add(Eit{0x50}.with({{1, 3}, {2, 4}}));
    std::string error;
    const std::optional<si::Eit> present = si::parseEit(Eit{0x4E}.with({{1, 6}}), error);
    const json list = schedule.value(kFirst, {*present});
    EXPECT_THAT(idsOf(list), ElementsAre(2, 1));
    EXPECT_EQ(list[1]["startTime"], 1767225600 + 6 * 3600);
}

TEST(ASchedule, DropsWhatANewVersionDoesNotHave) {
    Schedule schedule;
    schedule.add(Eit{0x50, 0, 0, 9, 1}.with({{1, 1}}));
    schedule.add(Eit{0x50, 0, 1, 9, 1}.with({{2, 2}}));
    schedule.add(Eit{0x50, 0, 8, 9, 9}.with({{3, 4}}));
    schedule.add(Eit{0x50, 0, 9, 9, 9}.with({{4, 5}}));
    schedule.add(Eit{0x50, 1, 0, 8, 0}.with({{1, 1}}));
    EXPECT_THAT(idsOf(schedule), ElementsAre(1, 3));
    schedule.add(Eit{0x50, 1, 8, 8, 8}.with({}));
    EXPECT_THAT(idsOf(schedule), ElementsAre(1));
}

TEST(ASchedule, TakesNoOtherTableAndNoMoreThanItsLimit) {
    Schedule schedule;
    schedule.add(Eit{0x4E}.with({{1, 1}}));
    EXPECT_THAT(idsOf(schedule), ElementsAre());
    fill(schedule);
    schedule.add(Eit{0x5F}.with({{9, 9}}));
    EXPECT_THAT(idsOf(schedule), ElementsAre());
}

TEST(ASchedule, FollowsNewVersionsAtItsLimit) {
    Schedule schedule;
    schedule.add(Eit{0x5F}.with({{1, 1}}));
    fill(schedule);
    schedule.add(Eit{0x5F, 1}.with({{2, 2}}));
    EXPECT_THAT(idsOf(schedule), ElementsAre(2));
    schedule.takeNews();
    schedule.add(Eit{0x5F, 2}.with({{3, 3}, {4, 4}}));
    EXPECT_THAT(idsOf(schedule), ElementsAre());
    EXPECT_TRUE(schedule.takeNews());
    schedule.add(Eit{0x5F, 3}.with({{5, 5}}));
    EXPECT_THAT(idsOf(schedule), ElementsAre(5));
}
