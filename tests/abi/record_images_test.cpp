// Invalid images are refused with the reason, and decoded texts end with a zero.
#include <gmock/gmock.h>
#include <malloc.h>

#include "message_transfer.h"
#include "platform_common/record_image.h"

using namespace lo::browserdvbservice;

namespace {

using Bytes = std::vector<std::uint8_t>;

/// The error text for an image; empty when the image is accepted. Both ways to decode it say the same.
std::string refusal(const ovxEndianTable& table, const Bytes& image) {
    platform_common::DecodedRecord decoded;
    std::string error;
    const bool taken = platform_common::decodeRecord(table, image.data(), image.size(), decoded, error);
    EXPECT_EQ(taken, error.empty());
    Bytes inPlace = image;
    inPlace.push_back(0xEE);
    std::string errorInPlace;
    EXPECT_EQ(platform_common::decodeRecordInPlace(table, platform_common::wireSizeOf(table), inPlace.data(),
                                                   image.size(), decoded, errorInPlace),
              taken);
    EXPECT_EQ(errorInPlace, error);
    return error;
}

template <typename Message>
const typename Message::Record& decoded(const Bytes& image, platform_common::DecodedRecord& record) {
    std::string error;
    EXPECT_TRUE(platform_common::decodeRecord(*Message::table(), image.data(), image.size(), record, error)) << error;
    return *static_cast<const typename Message::Record*>(record.record());
}

}  // namespace

TEST(ARecordImage, IsRefusedWhenAByteIsMissing) {
    EXPECT_EQ(refusal(*messages::OnPtsNotify::table(), Bytes(16)), "");
    EXPECT_EQ(refusal(*messages::OnPtsNotify::table(), Bytes(15)), "record of 15 bytes, 16 expected");
    EXPECT_EQ(refusal(*messages::OnAllTerminalStoped::table(), Bytes()), "record of 0 bytes, 1 expected");
}

TEST(ARecordImage, IsRefusedWhenBytesStandBehindIt) {
    EXPECT_EQ(refusal(*messages::OnPtsNotify::table(), Bytes(17)), "1 bytes behind the record's end");
    EXPECT_EQ(refusal(*messages::OnFilterClosed::table(), Bytes{0, 0, 0, 1, 0, 0, 0, 0, 'a'}), "");
    EXPECT_EQ(refusal(*messages::OnFilterClosed::table(), Bytes{0, 0, 0, 1, 0, 0, 0, 0, 'a', 'b'}),
              "1 bytes behind the record's end");
}

TEST(ARecordImage, RefusesACarrierLongerThanTheImage) {
    EXPECT_EQ(refusal(*messages::OnFilterClosed::table(), Bytes{0, 0, 0, 2, 0, 0, 0, 0, 'a'}),
              "carrier at offset 0 names 2 bytes, 1 are left");
    EXPECT_EQ(refusal(*messages::OnFilterClosed::table(), Bytes{0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0, 'a'}),
              "carrier at offset 0 names 4294967295 bytes, 1 are left");
    // The second of two carriers is limited by what the first one leaves.
    EXPECT_EQ(
        refusal(*messages::OnFilterOpened::table(), Bytes{0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 2, 0, 0, 0, 0, 'a', 'b'}),
        "carrier at offset 8 names 2 bytes, 1 are left");
}

TEST(ARecordImage, EndsEachCarriersBytesInAZero) {
    // Makes the heap return non-zero memory.
    mallopt(M_PERTURB, 0x5A);
    platform_common::DecodedRecord record;
    const auto& fields =
        decoded<messages::OnFilterOpened>({0, 0, 0, 3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 'a', 0, 'b'}, record);
    mallopt(M_PERTURB, 0);
    const _ovxDeserString_struct session = fields.session;
    const _ovxDeserString_struct dataSlot = fields.dataSlot;
    ASSERT_EQ(session.length, 3U);
    EXPECT_EQ(std::string(session.data, 4), std::string("a\0b\0", 4));
    ASSERT_EQ(dataSlot.length, 0U);
    ASSERT_NE(dataSlot.data, nullptr);
    EXPECT_EQ(dataSlot.data[0], '\0');
}

TEST(ARecordImage, GivesASequenceWithoutBytesBackWithoutBytes) {
    const OutgoingRecord<messages::CmdFilterOpen> outgoing(std::string(), 7U, OpenFilterMatchMask_t{{}, {1, 2}});
    platform_common::DecodedRecord record;
    const auto& fields = decoded<messages::CmdFilterOpen>(
        platform_common::encodeRecord(*messages::CmdFilterOpen::table(), outgoing.bytes()), record);
    const OpenFilterMatchMask_t matchMask = wire::OpenFilterMatchMaskField::load(fields.matchMask);
    EXPECT_TRUE(matchMask.mask.empty());
    EXPECT_EQ(matchMask.maskBits, std::vector<unsigned char>({1, 2}));
}

TEST(ARecordImage, DecodedInPlaceKeepsTheBytesThatEndIt) {
    Bytes image{0, 0, 0, 3, 0, 0, 0, 0, 0, 0, 0, 2, 0, 0, 0, 0, 'a', 0, 'b', 'c', 'd', 0xEE};
    platform_common::DecodedRecord record;
    std::string error;
    ASSERT_TRUE(platform_common::decodeRecordInPlace(*messages::OnFilterOpened::table(), 16, image.data(),
                                                     image.size() - 1, record, error))
        << error;
    const auto& fields = *static_cast<const messages::OnFilterOpened::Record*>(record.record());
    const _ovxDeserString_struct session = fields.session;
    const _ovxDeserString_struct dataSlot = fields.dataSlot;
    EXPECT_EQ(std::string(session.data, 4), std::string("a\0b\0", 4));
    EXPECT_EQ(static_cast<const void*>(dataSlot.data), image.data() + 19);
    EXPECT_EQ(std::string(dataSlot.data, 3), std::string("cd\0", 3));
    EXPECT_EQ(image[19], 'c') << "the text before it is a copy, whose zero does not fall on it";
}
