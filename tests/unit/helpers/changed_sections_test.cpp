// ChangedSections: which sections count as new.
#include "dvb_helpers/changed_sections.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using Section = std::vector<unsigned char>;

/// A section whose payload is the four bytes that identify the EIT's transport stream, and whose CRC_32 is made up.
struct Fields {
    unsigned char tableId = 0x4E;
    unsigned char extension = 1;
    unsigned char number = 0;
    unsigned char current = 1;
    unsigned char tsid = 1;
    unsigned char onid = 1;
    unsigned char checksum = 7;
};

Section sectionOf(const Fields& fields) {
    const auto flags = static_cast<unsigned char>(0xC0U | fields.current);
    return {fields.tableId, 0xB0, 13, 0, fields.extension, flags, fields.number, 1, 0, fields.tsid, 0,
            fields.onid,    0,    0,  0, fields.checksum};
}

class ChangedSections : public testing::Test {
protected:
    bool isNew(const Section& section) { return changed.isNew(section.data(), section.size()); }
    bool isNew(const Fields& fields) { return isNew(sectionOf(fields)); }

    velmora::dtv::helpers::ChangedSections changed;
};

}  // namespace

TEST_F(ChangedSections, LeaveOutRepetitions) {
    EXPECT_TRUE(isNew(Fields{}));
    EXPECT_FALSE(isNew(Fields{}));
    EXPECT_FALSE(isNew(Fields{}));
}

TEST_F(ChangedSections, CompareTheChecksumWithTheLastOne) {
    Fields other;
    other.checksum = 8;
    EXPECT_TRUE(isNew(Fields{}));
    EXPECT_TRUE(isNew(other));
    EXPECT_FALSE(isNew(other));
    EXPECT_TRUE(isNew(Fields{})) << "the first version again";
}

TEST_F(ChangedSections, TellTheSectionsOfATableApart) {
    Fields others[6];
    others[1].tableId = 0x4F;
    others[2].extension = 2;
    others[3].number = 1;
    others[4].current = 0;
    others[5].tsid = 2;
    for (int round = 0; round < 2; ++round) {
        for (const Fields& fields : others) {
            EXPECT_EQ(isNew(fields), round == 0) << (&fields - others);
        }
    }
}

TEST_F(ChangedSections, TellTheEitsOfNetworksApart) {
    Fields other;
    other.onid = 2;
    EXPECT_TRUE(isNew(Fields{}));
    EXPECT_TRUE(isNew(other));
    EXPECT_FALSE(isNew(Fields{}));
    EXPECT_FALSE(isNew(other));
}

TEST_F(ChangedSections, TellTheSdtsOfNetworksApart) {
    for (const int tableId : {0x42, 0x46}) {
        Section first = sectionOf(Fields{});
        first[0] = static_cast<unsigned char>(tableId);
        Section second = first;
        second[9] = 2;
        EXPECT_TRUE(isNew(first));
        EXPECT_TRUE(isNew(second));
        EXPECT_FALSE(isNew(first));
        second[11] = 9;  // part of the services, not of the network
        EXPECT_FALSE(isNew(second));
    }
}

TEST_F(ChangedSections, TakeTheContentOfOtherTablesForContent) {
    for (const int tableId : {0x02, 0x74}) {
        Section first = sectionOf(Fields{});
        first[0] = static_cast<unsigned char>(tableId);
        Section second = first;
        second[9] = 2;
        EXPECT_TRUE(isNew(first));
        EXPECT_FALSE(isNew(second)) << "its CRC_32 is the same";
    }
}

TEST_F(ChangedSections, CountSectionsWithoutVersionAsNew) {
    const Section time = {0x70, 0x70, 5, 0xE0, 0x12, 0x34, 0x56, 0x78};
    EXPECT_TRUE(isNew(time));
    EXPECT_TRUE(isNew(time));
    Section timeWithOffsets = sectionOf(Fields{});
    timeWithOffsets[0] = 0x73;
    timeWithOffsets[1] = 0x70;
    EXPECT_TRUE(isNew(timeWithOffsets));
    EXPECT_TRUE(isNew(timeWithOffsets));
}

TEST_F(ChangedSections, CountBytesThatAreTooShortAsNew) {
    const Section whole = sectionOf(Fields{});
    for (std::size_t length = 0; length < 12; ++length) {
        EXPECT_TRUE(changed.isNew(whole.data(), length)) << length;
        EXPECT_TRUE(changed.isNew(whole.data(), length)) << length;
    }
    for (std::size_t length = 12; length < whole.size(); ++length) {
        changed.isNew(whole.data(), length);
        EXPECT_FALSE(changed.isNew(whole.data(), length)) << length;
    }
}

TEST_F(ChangedSections, KeepALimitedNumber) {
    Section section = sectionOf(Fields{});
    const auto tell = [&](unsigned int index) {
        section[3] = static_cast<unsigned char>(index >> 8U & 0xFFU);
        section[4] = static_cast<unsigned char>(index & 0xFFU);
        section[6] = static_cast<unsigned char>(index >> 16U);
        return isNew(section);
    };
    constexpr unsigned int kMost = 100000;
    for (unsigned int index = 0; index < kMost; ++index) {
        ASSERT_TRUE(tell(index)) << index;
    }
    EXPECT_TRUE(tell(kMost - 1)) << "all are forgotten at the limit";
    EXPECT_FALSE(tell(kMost - 1));
    EXPECT_TRUE(tell(0));
}
