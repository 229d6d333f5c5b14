// Tests of the sections of the EIT that are kept.
#include "eit_sections.h"

#include <gmock/gmock.h>

#include "made_eit.h"
#include "si/tables.h"

namespace {

class KeptSections : public testing::Test {
protected:
    bool add(const MadePlace& place, const std::vector<MadeEvent>& events, std::size_t input = 1) {
        return sections.add(input, madeEit(place, events));
    }
    /// table_id and section_number of each.
    std::vector<std::pair<unsigned int, unsigned int>> kept() const {
        std::vector<std::pair<unsigned int, unsigned int>> list;
        for (const dtvservice::EitSections::Kept& each : sections.all()) {
            list.emplace_back((*each.section)[0], si::sectionNumber(*each.section));
        }
        return list;
    }
    static MadePlace at(unsigned int number, unsigned int last, unsigned int lastOfSegment, unsigned int version = 0) {
        MadePlace place;
        place.number = static_cast<std::uint8_t>(number);
        place.last = static_cast<std::uint8_t>(last);
        place.lastOfSegment = static_cast<std::uint8_t>(lastOfSegment);
        place.version = static_cast<std::uint8_t>(version);
        return place;
    }
    static MadePlace ofTable(unsigned int tableId, unsigned int lastTable, unsigned int version = 0) {
        MadePlace place = at(0, 0, 0, version);
        place.tableId = static_cast<std::uint8_t>(tableId);
        place.lastTable = static_cast<std::uint8_t>(lastTable);
        return place;
    }
    using Places = std::vector<std::pair<unsigned int, unsigned int>>;

    dtvservice::EitSections sections;
};

}  // namespace

TEST_F(KeptSections, AreTheLatestOfEachNumber) {
    add(at(0, 8, 1), {{1, "One"}});
    add(at(1, 8, 1), {{2, "Two"}});
    add(at(8, 8, 8), {{3, "Three"}});
    add(at(0, 8, 1), {{1, "One"}});
    EXPECT_EQ(kept(), (Places{{0x50, 0}, {0x50, 1}, {0x50, 8}}));
    add(at(0, 8, 1, 1), {{1, "Changed"}});
    EXPECT_EQ(kept().size(), 3U) << "the others stay until their new version comes";
    EXPECT_EQ(*sections.all()[0].section, madeEit(at(0, 8, 1, 1), {{1, "Changed"}}));
}

TEST_F(KeptSections, GoWhenTheirTableHasThemNoMore) {
    for (const unsigned int number : {0U, 1U, 2U, 8U, 9U}) {
        add(at(number, 9, number < 8 ? 2 : 9), {{1, "One"}});
    }
    add(at(0, 9, 0, 1), {{1, "One"}});
    EXPECT_EQ(kept(), (Places{{0x50, 0}, {0x50, 8}, {0x50, 9}})) << "behind the segment's last one";
    add(at(0, 0, 0, 2), {{1, "One"}});
    EXPECT_EQ(kept(), (Places{{0x50, 0}})) << "behind the last one";
}

TEST_F(KeptSections, GoWithTablesBehindTheLastOne) {
    for (const unsigned int table : {0x50U, 0x51U, 0x52U, 0x60U}) {
        add(ofTable(table, table == 0x60 ? 0x60 : 0x52), {{1, "One"}});
    }
    add(ofTable(0x50, 0x50, 1), {{1, "One"}});
    EXPECT_EQ(kept(), (Places{{0x50, 0}, {0x60, 0}}));
}

TEST_F(KeptSections, OfPresentFollowingComeFirstAndHaveNoSegments) {
    add(ofTable(0x50, 0x50), {{1, "One"}});
    MadePlace following = at(1, 1, 0);
    following.tableId = 0x4E;
    MadePlace present = at(0, 1, 0);
    present.tableId = 0x4E;
    add(following, {{2, "Two"}});
    add(present, {{1, "One"}});
    EXPECT_EQ(kept(), (Places{{0x4E, 0}, {0x4E, 1}, {0x50, 0}}));
}

TEST_F(KeptSections, AreThoseOfEachInputAndService) {
    MadePlace place;
    add(place, {{1, "One"}}, 1);
    add(place, {{1, "One"}}, 2);
    place.serviceId = 2;
    add(place, {{1, "One"}}, 2);
    EXPECT_EQ(sections.all().size(), 3U);
}

TEST_F(KeptSections, AreOfTheEitAlone) {
    EXPECT_TRUE(add(ofTable(0x4D, 0x4D), {{1, "One"}}));
    EXPECT_TRUE(add(ofTable(0x70, 0x70), {{1, "One"}}));
    const std::vector<std::uint8_t> cut = {0x50, 0xF0, 0x02, 0x00, 0x01};
    EXPECT_TRUE(sections.add(1, cut));
    EXPECT_TRUE(sections.add(1, {}));
    si::Section next = madeEit({}, {{1, "One"}});
    next[5] &= 0xFEU;
    EXPECT_TRUE(sections.add(1, next)) << "not yet valid";
    EXPECT_TRUE(sections.all().empty());
}

TEST_F(KeptSections, HaveABoundedNumberOfEvents) {
    const std::vector<MadeEvent> events(60, {1, "Name"});
    MadePlace place;
    place.serviceId = 0;
    while (add(place, events)) {
        ++place.serviceId;
    }
    EXPECT_EQ(place.serviceId, dtvservice::EitSections::kMostEvents / events.size());
    place.serviceId = 0;
    place.version = 1;
    EXPECT_TRUE(add(place, {{1, "One"}})) << "in place of another";
}

TEST_F(KeptSections, HaveABoundedNumberOfBytes) {
    const std::string descriptor = std::string("\x80\xFF") + std::string(255, 'x');
    std::string descriptors;
    for (int count = 0; count < 15; ++count) {
        descriptors += descriptor;
    }
    MadePlace place;
    place.serviceId = 0;
    const std::size_t size = madeEit(place, {{1, "Name", 0, descriptors}}).size();
    while (add(place, {{1, "Name", 0, descriptors}})) {
        ++place.serviceId;
    }
    EXPECT_EQ(place.serviceId, dtvservice::EitSections::kMostBytes / size);
}
