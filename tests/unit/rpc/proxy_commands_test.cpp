// Sending: what the transport gets for each command, and what the caller gets back.
#include "message_counts.h"
#include "message_transfer.h"
#include "proxy_fixture.h"
#include "some_values.h"

using namespace lo::browserdvbservice;

namespace {

struct ExpectedCommand {
    const char* operation;
    std::uint32_t messageId;
    const ovxEndianTable* table;
};

#define EXPECTED_COMMAND(operation, Message, decimal, hexadecimal, bytes, layout) \
    {#operation, decimal, &__ovx_EndianTable_browserdvbserviceMsg##Message##_t},
const ExpectedCommand kExpected[] = {
#include "expected_messages.inc"
};

/// Calls all commands in order and returns their results.
std::vector<int> callAllCommands(ServiceInterface& service, frame::MsgIds& ids) {
    std::vector<int> results;
#define EXPECTED_COMMAND(operation, Message, decimal, hexadecimal, bytes, layout) \
    results.push_back(callWithSomeValues(service, &ServiceInterface::operation, ids));
#include "expected_messages.inc"
    return results;
}

}  // namespace

TEST_F(AProxy, SendsEachCommandWithHeaderTableAndZero) {
    frame::MsgIds ids;
    callAllCommands(*proxy, ids);
    const std::vector<recording::SentMessage> sent = recording::sent();
    ASSERT_EQ(sent.size(), std::size(kExpected));
    for (std::size_t index = 0; index < sent.size(); ++index) {
        SCOPED_TRACE(kExpected[index].operation);
        EXPECT_EQ(sent[index].service, recording::ioService());
        EXPECT_EQ(sent[index].header.firstWord, -1);
        EXPECT_EQ(sent[index].header.interfaceId, 0x1CCD7773U);
        EXPECT_EQ(sent[index].header.messageId, kExpected[index].messageId);
        EXPECT_EQ(sent[index].header.direction, 0);
        EXPECT_EQ(sent[index].reserved, 0);
        EXPECT_EQ(sent[index].table, kExpected[index].table);
    }
}

TEST_F(AProxy, LogsEachCommandUnderItsOwnName) {
    frame::MsgIds ids;
    callAllCommands(*proxy, ids);
    const std::vector<recording::LogLine> lines = recording::log();
    ASSERT_EQ(lines.size(), std::size(kExpected));
    for (std::size_t index = 0; index < lines.size(); ++index) {
        EXPECT_THAT(lines[index], logged::plain(0x5F0FA0, kProxyFile, kExpected[index].operation, "Called.\n"));
    }
}

TEST_F(AProxy, WritesTheLineOfACommandBeforeItSends) {
    std::vector<std::size_t> linesAtSend;
    recording::setSendAction([&linesAtSend](const recording::SentMessage&) {
        linesAtSend.push_back(recording::log().size());
        return 0;
    });
    frame::MsgIds ids;
    callAllCommands(*proxy, ids);
    ASSERT_EQ(linesAtSend.size(), kCommands);
    for (std::size_t index = 0; index < linesAtSend.size(); ++index) {
        EXPECT_EQ(linesAtSend[index], index + 1) << kExpected[index].operation;
    }
}

TEST_F(AProxy, FormatsNoLineWhoseLevelIsOff) {
    recording::setLogThreshold(0);
    frame::MsgIds ids;
    callAllCommands(*proxy, ids);
    EXPECT_EQ(recording::levelChecks(), kCommands);
    EXPECT_EQ(recording::formattedLines(), 0U);
}

TEST_F(AProxy, ReturnsTheTransportsResultUnchanged) {
    frame::MsgIds ids;
    for (const int result : {0, 5, -107}) {
        recording::setSendResult(result);
        EXPECT_THAT(callAllCommands(*proxy, ids), testing::Each(result));
    }
}

TEST_F(AProxy, PassesTheCallersIdsThrough) {
    frame::MsgIds ids;
    ids.peer = 3;
    ids.transaction = 99;
    proxy->cmdDtvInfoRequest(ids, {});
    ASSERT_EQ(recording::sent().size(), 1U);
    EXPECT_EQ(recording::sent()[0].ids.peer, 3U);
    EXPECT_EQ(recording::sent()[0].ids.transaction, 99U);
}

TEST_F(AProxy, HandsTheCallersIdsOverWithoutACopy) {
    frame::MsgIds ids;
    callAllCommands(*proxy, ids);
    EXPECT_EQ(seams::sentIds(), std::vector<const frame::MsgIds*>(kCommands, &ids));
}

TEST_F(AProxy, SendsDefaultIdsAsAllOnes) {
    frame::MsgIds ids;
    proxy->cmdDtvInfoRequest(ids, {});
    EXPECT_EQ(recording::sent().at(0).ids.peer, 0xFFFFFFFFU);
    EXPECT_EQ(recording::sent().at(0).ids.transaction, 0xFFFFFFFFU);
}

TEST_F(AProxy, SendsOneByteForACommandWithoutFields) {
    frame::MsgIds ids;
    proxy->cmdSendPMTCache(ids, {});
    EXPECT_EQ(recording::sent().at(0).wire.size(), 1U);
}

TEST(AConversionStructure, GivesItsInMemoryFormBack) {
    TuneInfoChannel channel;
    channel.idType = 13;
    channel.dsd = std::string("\x43\x00\x0b", 3);
    channel.onid = 1;
    channel.tsid = 2;
    channel.sid = 3;
    channel.flags = 4;
    _TuneInfoChannel_struct structure(channel);
    const TuneInfoChannel back = structure;
    structure.release();
    EXPECT_EQ(back.idType, 13U);
    EXPECT_EQ(back.dsd, channel.dsd);
    EXPECT_EQ(back.onid, 1U);
    EXPECT_EQ(back.tsid, 2U);
    EXPECT_EQ(back.sid, 3U);
    EXPECT_EQ(back.flags, 4U);
}

TEST(AConversionStructure, BeginsWithNothingInIt) {
    const _OpenFilterMatchMask_t_struct matchMask;
    EXPECT_EQ(matchMask.mask.count, 0U);
    EXPECT_EQ(matchMask.mask.data, nullptr);
    const _TuneInfoComponent_struct component;
    EXPECT_EQ(component.first, 0U);
}

TEST(AConversionStructure, FreesOldContentsOnAssignment) {
    OpenFilterMatchMask_t matchMask;
    matchMask.mask = {1, 2, 3};
    matchMask.maskBits = {4};
    _OpenFilterMatchMask_t_struct structure(matchMask);
    matchMask.mask.clear();
    matchMask.maskBits = {9, 8};
    structure = matchMask;
    EXPECT_EQ(structure.mask.count, 0U);
    EXPECT_EQ(structure.mask.data, nullptr);
    const OpenFilterMatchMask_t back = structure;
    structure.release();
    EXPECT_TRUE(back.mask.empty());
    EXPECT_EQ(back.maskBits, (std::vector<unsigned char>{9, 8}));
}

TEST(AConversionStructure, OfAComponentCopiesThreeWords) {
    TuneInfoComponent component;
    component.first = 0xFFFFFFFF;
    component.second = 2;
    component.third = 3;
    const TuneInfoComponent back = _TuneInfoComponent_struct(component);
    EXPECT_EQ(back.first, 0xFFFFFFFFU);
    EXPECT_EQ(back.second, 2U);
    EXPECT_EQ(back.third, 3U);
}
