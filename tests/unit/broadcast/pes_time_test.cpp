// Tests of reading PTS and TEMI timelines from packets, and the components of a PMT.
#include "pes_time.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "packets.h"
#include "si/components.h"

namespace {

using broadcast::ptsOf;
using broadcast::TemiTimeline;
using broadcast::temiTimelinesOf;
using broadcast::TsPacket;

/// A packet with an adaptation field and the start of a PES packet.
Packet packetWith(const Bytes& adaptation, const Bytes& payload) {
    Packet packet;
    packet.fill(0xFF);
    packet[0] = 0x47;
    packet[1] = 0x41;
    packet[2] = 0x00;
    packet[3] = adaptation.empty() ? 0x10 : 0x30;
    std::size_t at = 4;
    if (!adaptation.empty()) {
        packet[at++] = static_cast<std::uint8_t>(adaptation.size());
        std::copy(adaptation.begin(), adaptation.end(), packet.begin() + static_cast<std::ptrdiff_t>(at));
        at += adaptation.size();
    }
    std::copy(payload.begin(), payload.end(), packet.begin() + static_cast<std::ptrdiff_t>(at));
    return packet;
}

// PTS 0x1_2345_6789 of 33 bits.
const Bytes kPes = {0, 0, 1, 0xE0, 0, 0, 0x80, 0x80, 5, 0x29, 0x8D, 0x15, 0xCF, 0x13};

// PCR, then an extension with one timeline: only an NTP time stamp; force_reload, paused and discontinuity are set.
const Bytes kNtp = {0x51, 0x00, 0x00, 0x7F, 0x21, 0x7E, 0x00, 0x0E, 0x00, 0x04, 0x0B,
                    0x23, 0x80, 0xA1, 0xE6, 0x42, 0xD9, 0xD5, 0x43, 0x4D, 0xAD, 0x31};

std::vector<TemiTimeline> timelinesOf(const Bytes& adaptation) {
    const Packet packet = packetWith(adaptation, {});
    return temiTimelinesOf(TsPacket{packet.data()});
}

si::Pmt::Stream stream(std::uint8_t type, std::uint16_t pid, si::Descriptors descriptors = {}) {
    return {type, pid, std::move(descriptors)};
}

}  // namespace

TEST(APts, IsReadWhereAPesPacketStarts) {
    const Packet packet = packetWith({}, kPes);
    EXPECT_EQ(ptsOf(TsPacket{packet.data()}), 0x123456789ULL);
}

TEST(APts, IsNotReadFromContinuedOrScrambledPackets) {
    Packet inside = packetWith({}, kPes);
    inside[1] = 0x01;
    EXPECT_EQ(ptsOf(TsPacket{inside.data()}), std::nullopt);
    Packet scrambled = packetWith({}, kPes);
    scrambled[3] = 0x90;
    EXPECT_EQ(ptsOf(TsPacket{scrambled.data()}), std::nullopt);
    Bytes without = kPes;
    without[7] = 0x00;
    const Packet none = packetWith({}, without);
    EXPECT_EQ(ptsOf(TsPacket{none.data()}), std::nullopt);
    const Packet cut = packetWith(Bytes(175, 0x00), {0, 0, 1});
    EXPECT_EQ(ptsOf(TsPacket{cut.data()}), std::nullopt);
}

TEST(ATemiTimeline, UsesALoneNtpTimestampAsMediaTimestamp) {
    const std::vector<TemiTimeline> timelines = timelinesOf(kNtp);
    ASSERT_EQ(timelines.size(), 1U);
    EXPECT_EQ(timelines[0].id, 0xA1);
    EXPECT_TRUE(timelines[0].forceReload);
    EXPECT_TRUE(timelines[0].paused);
    EXPECT_TRUE(timelines[0].discontinuity);
    EXPECT_EQ(timelines[0].timescale, 0U);
    EXPECT_EQ(timelines[0].mediaTimestamp, 0xE642D9D5434DAD31ULL);
}

TEST(ATemiTimeline, HasATimestampOf32Or64Bits) {
    const Bytes narrow = {0x01, 0x0E, 0x0F, 0x04, 0x0B, 0x40, 0x7F, 0x07, 0, 0, 0x03, 0xE8, 0, 0, 0x10, 0x00};
    ASSERT_EQ(timelinesOf(narrow).size(), 1U);
    EXPECT_EQ(timelinesOf(narrow)[0].timescale, 1000U);
    EXPECT_EQ(timelinesOf(narrow)[0].mediaTimestamp, 0x1000U);
    const Bytes wide = {0x01, 0x12, 0x0F, 0x04, 0x0F, 0x80, 0x7F, 0x07, 0, 0, 0x03, 0xE8, 0, 0, 0, 1, 0, 0, 0x10, 0x00};
    ASSERT_EQ(timelinesOf(wide).size(), 1U);
    EXPECT_EQ(timelinesOf(wide)[0].mediaTimestamp, 0x100001000U);
}

TEST(ATemiTimeline, IsFoundAfterAllOtherFields) {
    Bytes field = {0x1F};
    field.insert(field.end(), 6 + 6 + 1, 0x00);     // PCR, OPCR, splice_countdown
    field.insert(field.end(), {0x02, 0xAA, 0xBB});  // private data
    field.insert(field.end(), {0x18, 0xEF});        // extension with all its parts
    field.insert(field.end(), 2 + 3 + 5, 0x00);
    field.insert(field.end(), {0x0B, 0x00});                                // another descriptor, empty
    field.insert(field.end(), {0x04, 0x0B, 0x40, 0x7F, 0x07, 0, 0, 0x03});  // truncated
    EXPECT_THAT(timelinesOf(field), testing::IsEmpty());
    field[17] = 0x1A;  // the correct length
    field.insert(field.end(), {0xE8, 0, 0, 0x10, 0x00});
    ASSERT_EQ(timelinesOf(field).size(), 1U);
    EXPECT_EQ(timelinesOf(field)[0].id, 7);
}

TEST(ATemiTimeline, IsNotReadOutOfItsField) {
    for (std::size_t length = 0; length < kNtp.size(); ++length) {
        EXPECT_THAT(timelinesOf(Bytes(kNtp.begin(), kNtp.begin() + static_cast<std::ptrdiff_t>(length))),
                    testing::IsEmpty());
    }
    const Bytes without = {0x01, 0x0E, 0x1F, 0x04, 0x0B, 0x40, 0x7F, 0x07, 0, 0, 0x03, 0xE8, 0, 0, 0x10, 0x00};
    EXPECT_THAT(timelinesOf(without), testing::IsEmpty()) << "af_descriptor_not_present_flag";
}

TEST(TheComponents, AreVideoAudioAndSubtitlesInOrder) {
    si::Pmt pmt;
    pmt.streams = {stream(0x1B, 100, {{0x52, {1}}}),
                   stream(0x06, 101, {{0x52, {2}}, {0x0A, {'d', 'e', 'u', 0}}, {0x6A, {0x80, 0x44}}}),
                   stream(0x05, 102, {{0x6F, {0, 0x10, 0xE0}}}),
                   stream(0x06, 103, {{0x59, {'f', 'r', 'a', 0x10, 0, 0, 0, 0}}, {0x09, {0, 1, 0xE0, 5}}}),
                   stream(0x03, 104, {{0x52, {4}}})};
    // Component descriptors for component_tag 1 and 4: AVC 16:9, MPEG audio with two channels.
    const si::Descriptors event = {{0x50, {0xF5, 0x03, 1, 'e', 'n', 'g'}}, {0x50, {0xF2, 0x03, 4, 'e', 'n', 'g'}}};
    const std::vector<si::Component> list = si::components(pmt, event);
    ASSERT_EQ(list.size(), 4U);
    EXPECT_EQ(list[0].type, si::ComponentType::video);
    EXPECT_EQ(list[0].encoding, 0x1B);
    EXPECT_EQ(list[0].aspectRatio, 3);
    EXPECT_EQ(list[0].tag, 1);
    EXPECT_EQ(list[1].type, si::ComponentType::audio);
    EXPECT_EQ(list[1].index, 1);
    EXPECT_EQ(list[1].encoding, 0x6A06);
    EXPECT_EQ(list[1].audioChannels, 6) << "AC-3 with more than two channels";
    EXPECT_EQ(list[1].language, "deu");
    EXPECT_EQ(list[2].type, si::ComponentType::subtitle);
    EXPECT_EQ(list[2].pid, 103);
    EXPECT_EQ(list[2].tag, std::nullopt);
    EXPECT_TRUE(list[2].scrambled);
    EXPECT_FALSE(list[0].scrambled);
    EXPECT_EQ(list[3].audioChannels, 2);
}

TEST(TheComponents, IncludeTeletextSubtitlePages) {
    // Initial page, subtitle page, programme schedule, subtitle page for the hard of hearing, and a truncated entry.
    si::Pmt pmt;
    pmt.streams = {
        stream(0x06, 100, {{0x52, {7}}, {0x56, {'d', 'e',  'u',  0x09, 0x00, 'd', 'e',  'u',  0x11, 0x50, 'd', 'e',
                                                'u', 0x20, 0x01, 'f',  'r',  'a', 0x2F, 0x77, 'i',  't',  'a', 0x11}}}),
        stream(0x06, 101, {{0x56, {'d', 'e', 'u', 0x09, 0x00}}}), stream(0x06, 102, {{0x56, {}}}),
        stream(0x06, 103, {{0x56, {'n', 'l', 'd', 0x10, 0x88}}})};
    const std::vector<si::Component> list = si::components(pmt, {});
    ASSERT_EQ(list.size(), 3U);
    for (std::size_t index = 0; index < list.size(); ++index) {
        EXPECT_EQ(list[index].index, index);
        EXPECT_EQ(list[index].type, si::ComponentType::subtitle);
        EXPECT_EQ(list[index].encoding, 0x5606);
    }
    EXPECT_EQ(list[0].pid, 100);
    EXPECT_EQ(list[0].tag, 7);
    EXPECT_EQ(list[0].language, "deu");
    EXPECT_EQ(list[1].pid, 100);
    EXPECT_EQ(list[1].tag, 7);
    EXPECT_EQ(list[1].language, "fra");
    EXPECT_EQ(list[2].pid, 103);
    EXPECT_EQ(list[2].language, "nld");
}

TEST(TheComponents, HaveEachTeletextPageOnce) {
    si::Pmt pmt;
    pmt.streams = {stream(0x06, 100, {{0x56, {'d', 'e', 'u', 0x11, 0x50, 'd', 'e', 'u', 0x29, 0x50}}})};
    EXPECT_EQ(si::components(pmt, {}).size(), 1U);
}

TEST(TheComponents, HaveNoneForAnEitThatIsCut) {
    EXPECT_THAT(si::firstEventDescriptors(Bytes{}), testing::IsEmpty());
    EXPECT_THAT(si::firstEventDescriptors(Bytes(20, 0xFF)), testing::IsEmpty());
    EXPECT_THAT(si::firstEventDescriptors(Bytes(40, 0xFF)), testing::SizeIs(testing::Le(12U)));
}
