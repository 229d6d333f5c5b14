// Tests of assembling sections from packets.
#include "section_assembler.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "packets.h"

namespace {

class ASectionAssembler : public testing::Test {
protected:
    void feed(const Packet& packet) { assembler.feed(broadcast::TsPacket{packet.data()}); }
    void feed(const std::vector<Packet>& packets) {
        for (const Packet& packet : packets) {
            feed(packet);
        }
    }

    std::vector<Bytes> sections;
    broadcast::SectionAssembler assembler{
        [this](si::Bytes section) { sections.emplace_back(section.data, section.data + section.size); }};
    PacketMaker maker;
};

}  // namespace

TEST_F(ASectionAssembler, GivesSectionsOfEveryLengthWhole) {
    for (std::size_t size = 12; size <= 4096; size += size < 400 ? 1 : 123) {
        sections.clear();
        const Bytes section = sectionOf(size);
        ASSERT_EQ(section.size(), size);
        feed(maker.packets({section}));
        EXPECT_THAT(sections, testing::ElementsAre(section)) << size;
    }
}

TEST_F(ASectionAssembler, GivesTheLongestSectionsWhole) {
    for (const std::size_t size : {4093U, 4094U, 4095U, 4096U}) {
        sections.clear();
        feed(maker.packets({sectionOf(size)}));
        EXPECT_THAT(sections, testing::ElementsAre(sectionOf(size))) << size;
    }
}

TEST_F(ASectionAssembler, GivesSeveralSectionsOfOnePacketAndAcrossPackets) {
    std::vector<Bytes> expected;
    for (std::uint8_t seed = 1; seed < 40; ++seed) {
        expected.push_back(sectionOf(12 + seed * std::size_t{7}, seed));
    }
    feed(maker.packets(expected));
    EXPECT_EQ(sections, expected);
    EXPECT_EQ(assembler.counts().sections, expected.size());
    EXPECT_EQ(assembler.counts().cut, 0U);
}

TEST_F(ASectionAssembler, GivesASectionWithoutSyntaxAsItIs) {
    const Bytes tdt = {0x70, 0x70, 0x05, 1, 2, 3, 4, 5};
    feed(maker.packets({tdt}));
    EXPECT_THAT(sections, testing::ElementsAre(tdt));
}

TEST_F(ASectionAssembler, TakesASectionWhoseHeaderIsSplitBetweenPackets) {
    // After the 181 bytes of the first section, the packet has room for two bytes of the second one's header.
    const std::vector<Bytes> expected = {sectionOf(181), sectionOf(50, 2)};
    feed(maker.packets(expected));
    EXPECT_EQ(sections, expected);
}

TEST_F(ASectionAssembler, DropsASectionThatTheNextStartCuts) {
    std::vector<Packet> cut = maker.packets({sectionOf(500)});
    feed(cut[0]);
    const Bytes next = sectionOf(100, 2);
    PacketMaker following;
    following.skipOne();
    feed(following.packets({next}));
    EXPECT_THAT(sections, testing::ElementsAre(next));
    EXPECT_EQ(assembler.counts().cut, 1U);
    EXPECT_EQ(assembler.counts().continuityErrors, 0U);
}

TEST_F(ASectionAssembler, DropsTheSectionInProgressAtAGap) {
    std::vector<Packet> packets = maker.packets({sectionOf(500)});
    packets.erase(packets.begin() + 1);
    feed(packets);
    EXPECT_TRUE(sections.empty());
    EXPECT_EQ(assembler.counts().continuityErrors, 1U);
    feed(maker.packets({sectionOf(60, 3)}));
    EXPECT_THAT(sections, testing::ElementsAre(sectionOf(60, 3)));
}

TEST_F(ASectionAssembler, IgnoresATrueDuplicateOnce) {
    const std::vector<Packet> packets = maker.packets({sectionOf(500)});
    for (const Packet& packet : packets) {
        feed(packet);
        feed(packet);
    }
    EXPECT_THAT(sections, testing::ElementsAre(sectionOf(500)));
    EXPECT_EQ(assembler.counts().duplicates, packets.size());
    EXPECT_EQ(assembler.counts().continuityErrors, 0U);
}

TEST_F(ASectionAssembler, TakesAThirdCopyForAGap) {
    const std::vector<Packet> packets = maker.packets({sectionOf(500)});
    feed(packets[0]);
    feed(packets[0]);
    feed(packets[0]);
    EXPECT_EQ(assembler.counts().continuityErrors, 1U);
}

TEST_F(ASectionAssembler, TakesARepeatedCounterWithNewPayloadForAGap) {
    PacketMaker same;
    feed(maker.packets({sectionOf(60, 1)}));
    feed(same.packets({sectionOf(60, 2)}));
    EXPECT_THAT(sections, testing::ElementsAre(sectionOf(60, 1), sectionOf(60, 2)));
    EXPECT_EQ(assembler.counts().continuityErrors, 1U);
}

TEST_F(ASectionAssembler, IgnoresBrokenAndScrambledPackets) {
    Packet broken = maker.packets({sectionOf(60)})[0];
    broken[1] |= 0x80;
    feed(broken);
    Packet scrambled = maker.packets({sectionOf(60)})[0];
    scrambled[3] |= 0x80;
    feed(scrambled);
    EXPECT_TRUE(sections.empty());
    EXPECT_EQ(assembler.counts().unusable, 2U);
}

TEST_F(ASectionAssembler, NeverGivesASectionWithAWrongCrc) {
    for (std::size_t at = 3; at < 60; ++at) {
        Bytes section = sectionOf(60);
        section[at] ^= 0x10;
        feed(maker.packets({section}));
    }
    EXPECT_TRUE(sections.empty());
    EXPECT_EQ(assembler.counts().crcErrors, 57U);
}

TEST_F(ASectionAssembler, IgnoresAPointerBeyondThePacket) {
    feed(maker.packet({0xFE, 0x80, 0xB0}, true));
    feed(maker.packets({sectionOf(60)}));
    EXPECT_THAT(sections, testing::ElementsAre(sectionOf(60)));
}

TEST_F(ASectionAssembler, CountsNoGapAtADiscontinuity) {
    feed(maker.packets({sectionOf(500)})[0]);
    assembler.discontinuity();
    PacketMaker other;
    other.skipOne();
    other.skipOne();
    other.skipOne();
    feed(other.packets({sectionOf(60)}));
    EXPECT_THAT(sections, testing::ElementsAre(sectionOf(60)));
    EXPECT_EQ(assembler.counts().continuityErrors, 0U);
}

TEST_F(ASectionAssembler, SurvivesRandomPackets) {
    std::uint32_t state = 1;
    for (int count = 0; count < 20000; ++count) {
        Packet packet;
        for (std::uint8_t& byte : packet) {
            state = state * 1664525U + 1013904223U;
            byte = static_cast<std::uint8_t>(state >> 24U);
        }
        packet[0] = 0x47;
        feed(packet);
    }
    feed(maker.packets({sectionOf(60)}));
    feed(maker.packets({sectionOf(60)}));
    EXPECT_THAT(sections, testing::Contains(sectionOf(60)));
}
