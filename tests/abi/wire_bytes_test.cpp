// The wire bytes of every message, typed out: the record in network byte order, carriers as (length, 0), then the
// carried bytes. Strings have two bytes, none, or a zero byte inside. The bytes are the same for both widths.
#include <gtest/gtest.h>

#include "hex_text.h"
#include "message_transfer.h"
#include "platform_common/record_image.h"

using namespace lo::browserdvbservice;

namespace {

template <typename Message, typename... Arguments>
std::string wireOf(const Arguments&... arguments) {
    const OutgoingRecord<Message> outgoing(arguments...);
    return hexText(platform_common::encodeRecord(*Message::table(), outgoing.bytes()));
}

}  // namespace

TEST(TheWireBytes, OfCmdTuneToService) {
    EXPECT_EQ(wireOf<messages::CmdTuneToService>(TuneInfoChannel{0x11121314U, std::string("ab", 2), 0x21222324U,
                                                                 0x31323334U, 0x41424344U, 0x51525354U}),
              hexText("11121314 00000002 00000000 21222324 31323334 41424344 51525354"
                      " 6162"));
}

TEST(TheWireBytes, OfCmdTuneToComponent) {
    EXPECT_EQ(wireOf<messages::CmdTuneToComponent>(TuneInfoComponent{0x11121314U, 0x21222324U, 0x31323334U}),
              hexText("11121314 21222324 31323334"));
}

TEST(TheWireBytes, OfCmdUnselectComponent) {
    EXPECT_EQ(wireOf<messages::CmdUnselectComponent>(static_cast<ComponentType>(1)), hexText("00000001"));
}

TEST(TheWireBytes, OfCmdSelectComponent) {
    EXPECT_EQ(wireOf<messages::CmdSelectComponent>(static_cast<ComponentType>(1)), hexText("00000001"));
}

TEST(TheWireBytes, OfCmdSetAudioSource) {
    EXPECT_EQ(wireOf<messages::CmdSetAudioSource>(0x11121314U, std::string("ab", 2)),
              hexText("11121314 00000002 00000000"
                      " 6162"));
}

TEST(TheWireBytes, OfCmdTriggerAitReparse) {
    EXPECT_EQ(wireOf<messages::CmdTriggerAitReparse>(), hexText("00"));
}

TEST(TheWireBytes, OfCmdSendPMTCache) {
    EXPECT_EQ(wireOf<messages::CmdSendPMTCache>(), hexText("00"));
}

TEST(TheWireBytes, OfCmdHandleHbbtvStatus) {
    EXPECT_EQ(wireOf<messages::CmdHandleHbbtvStatus>(-1001), hexText("FFFFFC17"));
}

TEST(TheWireBytes, OfCmdMountDsmcc) {
    EXPECT_EQ(wireOf<messages::CmdMountDsmcc>(0x11121314U, static_cast<unsigned short>(0x2122),
                                              static_cast<unsigned short>(0x3132), static_cast<unsigned short>(0x4142),
                                              static_cast<short>(-7)),
              hexText("11121314 21223132 4142FFF9"));
}

TEST(TheWireBytes, OfCmdAddStreamEventListener) {
    EXPECT_EQ(wireOf<messages::CmdAddStreamEventListener>(
                  0x11121314U, static_cast<unsigned short>(0x2122), static_cast<unsigned short>(0x3132),
                  static_cast<unsigned short>(0x4142), static_cast<short>(-7), std::string("ab", 2), std::string()),
              hexText("11121314 21223132 4142FFF9 00000002 00000000 00000000 00000000"
                      " 6162"));
}

TEST(TheWireBytes, OfCmdRemoveStreamEventListener) {
    EXPECT_EQ(wireOf<messages::CmdRemoveStreamEventListener>(
                  0x11121314U, static_cast<unsigned short>(0x2122), static_cast<unsigned short>(0x3132),
                  static_cast<unsigned short>(0x4142), static_cast<short>(-7), std::string("ab", 2), std::string()),
              hexText("11121314 21223132 4142FFF9 00000002 00000000 00000000 00000000"
                      " 6162"));
}

TEST(TheWireBytes, OfCmdVodGetMaxdomeSecureSerialNumber) {
    EXPECT_EQ(wireOf<messages::CmdVodGetMaxdomeSecureSerialNumber>(std::string("ab", 2)), hexText("00000002 00000000"
                                                                                                  " 6162"));
}

TEST(TheWireBytes, OfCmdUpdateIPCChannelNames) {
    EXPECT_EQ(wireOf<messages::CmdUpdateIPCChannelNames>(std::string("ab", 2), std::string(), std::string("x\0y", 3)),
              hexText("00000002 00000000 00000000 00000000 00000003 00000000"
                      " 61627800 79"));
}

TEST(TheWireBytes, OfCmdFilterOpen) {
    EXPECT_EQ(wireOf<messages::CmdFilterOpen>(std::string("ab", 2), 0x11121314U,
                                              OpenFilterMatchMask_t{{}, {0x78, 0x00, 0x79}}),
              hexText("00000002 00000000 11121314 00000000 00000000 00000003 00000000"
                      " 61627800 79"));
}

TEST(TheWireBytes, OfCmdFilterClose) {
    EXPECT_EQ(wireOf<messages::CmdFilterClose>(std::string("ab", 2)), hexText("00000002 00000000"
                                                                              " 6162"));
}

TEST(TheWireBytes, OfCmdDataReadFinished) {
    EXPECT_EQ(wireOf<messages::CmdDataReadFinished>(std::string("ab", 2), std::string()),
              hexText("00000002 00000000 00000000 00000000"
                      " 6162"));
}

TEST(TheWireBytes, OfCmdTriggerServiceInfoAcquire) {
    EXPECT_EQ(wireOf<messages::CmdTriggerServiceInfoAcquire>(), hexText("00"));
}

TEST(TheWireBytes, OfCmdStartPMTRequest) {
    EXPECT_EQ(wireOf<messages::CmdStartPMTRequest>(std::string("ab", 2), 0x11121314U),
              hexText("00000002 00000000 11121314"
                      " 6162"));
}

TEST(TheWireBytes, OfCmdStopPMTRequest) {
    EXPECT_EQ(wireOf<messages::CmdStopPMTRequest>(std::string("ab", 2)), hexText("00000002 00000000"
                                                                                 " 6162"));
}

TEST(TheWireBytes, OfCmdSendPtsRequest) {
    EXPECT_EQ(wireOf<messages::CmdSendPtsRequest>(0x11121314U), hexText("11121314"));
}

TEST(TheWireBytes, OfCmdStartTemiTimelineRequest) {
    EXPECT_EQ(wireOf<messages::CmdStartTemiTimelineRequest>(0x11121314U, 0x21222324U, 0x31323334U),
              hexText("11121314 21222324 31323334"));
}

TEST(TheWireBytes, OfCmdStopTemiTimelineRequest) {
    EXPECT_EQ(wireOf<messages::CmdStopTemiTimelineRequest>(), hexText("00"));
}

TEST(TheWireBytes, OfCmdStartOSDDetection) {
    EXPECT_EQ(wireOf<messages::CmdStartOSDDetection>(0x11121314U), hexText("11121314"));
}

TEST(TheWireBytes, OfCmdStopOSDDetection) {
    EXPECT_EQ(wireOf<messages::CmdStopOSDDetection>(0x11121314U), hexText("11121314"));
}

TEST(TheWireBytes, OfCmdSendDrmMessage) {
    EXPECT_EQ(
        wireOf<messages::CmdSendDrmMessage>(0x1112131415161718ULL, static_cast<unsigned short>(0x2122),
                                            static_cast<unsigned short>(0x3132), std::string("ab", 2), std::string()),
        hexText("11121314 15161718 21223132 00000002 00000000 00000000 00000000"
                " 6162"));
}

TEST(TheWireBytes, OfCmdCaDrmRequestConnect) {
    EXPECT_EQ(wireOf<messages::CmdCaDrmRequestConnect>(0x1112131415161718ULL), hexText("11121314 15161718"));
}

TEST(TheWireBytes, OfCmdCaDrmRequestDisconnect) {
    EXPECT_EQ(wireOf<messages::CmdCaDrmRequestDisconnect>(static_cast<unsigned short>(0x1112)), hexText("1112"));
}

TEST(TheWireBytes, OfCmdSendOpAppInstallStatus) {
    EXPECT_EQ(
        wireOf<messages::CmdSendOpAppInstallStatus>(static_cast<OpappType>(1), static_cast<OpappInstallStatus>(1)),
        hexText("00000001 00000001"));
}

TEST(TheWireBytes, OfCmdDtvInfoRequest) {
    EXPECT_EQ(wireOf<messages::CmdDtvInfoRequest>(), hexText("00"));
}

TEST(TheWireBytes, OfOnAitChannelInfoUpdated) {
    EXPECT_EQ(wireOf<messages::OnAitChannelInfoUpdated>(static_cast<short>(-3), static_cast<unsigned short>(0x2122),
                                                        static_cast<unsigned short>(0x3132),
                                                        static_cast<unsigned short>(0x4142)),
              hexText("FFFD2122 31324142"));
}

TEST(TheWireBytes, OfOnAitParsingStateChanged) {
    EXPECT_EQ(wireOf<messages::OnAitParsingStateChanged>(static_cast<unsigned short>(0x1112)), hexText("1112"));
}

TEST(TheWireBytes, OfOnAitSectionAvailable) {
    EXPECT_EQ(wireOf<messages::OnAitSectionAvailable>(std::string("ab", 2)), hexText("00000002 00000000"
                                                                                     " 6162"));
}

TEST(TheWireBytes, OfOnBrowserOpenFilterConf) {
    EXPECT_EQ(wireOf<messages::OnBrowserOpenFilterConf>(0x11121314U, std::string("ab", 2), static_cast<short>(-4)),
              hexText("11121314 00000002 00000000 FFFC"
                      " 6162"));
}

TEST(TheWireBytes, OfOnBrowserOCloseFilterConf) {
    EXPECT_EQ(wireOf<messages::OnBrowserOCloseFilterConf>(std::string("ab", 2), static_cast<short>(-3)),
              hexText("00000002 00000000 FFFD"
                      " 6162"));
}

TEST(TheWireBytes, OfOnAitInfoAvailable) {
    EXPECT_EQ(wireOf<messages::OnAitInfoAvailable>(
                  0x11121314U, static_cast<unsigned short>(0x2122), static_cast<unsigned char>(0x31),
                  static_cast<unsigned char>(0x41), static_cast<unsigned char>(0x51), static_cast<unsigned char>(0x61),
                  std::string("ab", 2), std::string(), static_cast<unsigned char>(0x71)),
              hexText("11121314 21223141 51610000 00020000 00000000 00000000 000071"
                      " 6162"));
}

TEST(TheWireBytes, OfOnAitBoundaryExtensionAvailable) {
    EXPECT_EQ(wireOf<messages::OnAitBoundaryExtensionAvailable>(0x11121314U, static_cast<unsigned short>(0x2122),
                                                                std::string("ab", 2)),
              hexText("11121314 21220000 00020000 0000"
                      " 6162"));
}

TEST(TheWireBytes, OfOnDsmccMounted) {
    EXPECT_EQ(wireOf<messages::OnDsmccMounted>(0x11121314U, static_cast<unsigned short>(0x2122),
                                               static_cast<unsigned short>(0x3132), static_cast<unsigned short>(0x4142),
                                               static_cast<short>(-7), static_cast<unsigned short>(0x6162),
                                               std::string("ab", 2)),
              hexText("11121314 21223132 4142FFF9 61620000 00020000 0000"
                      " 6162"));
}

TEST(TheWireBytes, OfOnStreamEventListenerAdded) {
    EXPECT_EQ(wireOf<messages::OnStreamEventListenerAdded>(0x11121314U, static_cast<unsigned short>(0x2122),
                                                           static_cast<unsigned short>(0x3132),
                                                           static_cast<unsigned short>(0x4142), static_cast<short>(-7),
                                                           std::string("ab", 2), std::string(), 0x61626364U),
              hexText("11121314 21223132 4142FFF9 00000002 00000000 00000000 00000000 61626364"
                      " 6162"));
}

TEST(TheWireBytes, OfOnStreamEventListenerRemoved) {
    EXPECT_EQ(wireOf<messages::OnStreamEventListenerRemoved>(
                  0x11121314U, static_cast<unsigned short>(0x2122), static_cast<unsigned short>(0x3132),
                  static_cast<unsigned short>(0x4142), static_cast<short>(-7), std::string("ab", 2), std::string(),
                  0x61626364U),
              hexText("11121314 21223132 4142FFF9 00000002 00000000 00000000 00000000 61626364"
                      " 6162"));
}

TEST(TheWireBytes, OfOnStreamEventListenerSignalled) {
    std::uint8_t bytes[] = {0x78, 0x00, 0x79};
    const _ovxDeserVectorU8_struct carrier{3, bytes};
    EXPECT_EQ(
        wireOf<messages::OnStreamEventListenerSignalled>(
            static_cast<unsigned short>(0x1112), static_cast<unsigned short>(0x2122),
            static_cast<unsigned short>(0x3132), static_cast<short>(-6), std::string("ab", 2), std::string(), carrier),
        hexText("11122122 3132FFFA 00000002 00000000 00000000 00000000 00000003 00000000"
                " 61627800 79"));
}

TEST(TheWireBytes, OfOnVodMaxdomeSecureSerialNumber) {
    EXPECT_EQ(wireOf<messages::OnVodMaxdomeSecureSerialNumber>(std::string("ab", 2)), hexText("00000002 00000000"
                                                                                              " 6162"));
}

TEST(TheWireBytes, OfOnFilterOpened) {
    EXPECT_EQ(wireOf<messages::OnFilterOpened>(std::string("ab", 2), std::string()),
              hexText("00000002 00000000 00000000 00000000"
                      " 6162"));
}

TEST(TheWireBytes, OfOnFilterClosed) {
    EXPECT_EQ(wireOf<messages::OnFilterClosed>(std::string("ab", 2)), hexText("00000002 00000000"
                                                                              " 6162"));
}

TEST(TheWireBytes, OfOnFilterSectionDataArrived) {
    EXPECT_EQ(wireOf<messages::OnFilterSectionDataArrived>(std::string("ab", 2), std::string(), 0x11121314U),
              hexText("00000002 00000000 00000000 00000000 11121314"
                      " 6162"));
}

TEST(TheWireBytes, OfOnServiceChanged) {
    EXPECT_EQ(wireOf<messages::OnServiceChanged>(std::string("ab", 2), std::string()),
              hexText("00000002 00000000 00000000 00000000"
                      " 6162"));
}

TEST(TheWireBytes, OfOnAcquireDtvServiceInfo) {
    EXPECT_EQ(wireOf<messages::OnAcquireDtvServiceInfo>(std::string("ab", 2)), hexText("00000002 00000000"
                                                                                       " 6162"));
}

TEST(TheWireBytes, OfOnHbbtvEngineStatusChanged) {
    EXPECT_EQ(wireOf<messages::OnHbbtvEngineStatusChanged>(-1001), hexText("FFFFFC17"));
}

TEST(TheWireBytes, OfOnPmtDataChange) {
    EXPECT_EQ(
        wireOf<messages::OnPmtDataChange>(static_cast<unsigned short>(0x1112), static_cast<unsigned short>(0x2122),
                                          static_cast<unsigned short>(0x3132), -1004, std::string("ab", 2)),
        hexText("11122122 3132FFFF FC140000 00020000 0000"
                " 6162"));
}

TEST(TheWireBytes, OfOnEitDataChange) {
    EXPECT_EQ(wireOf<messages::OnEitDataChange>(-1001, std::string("ab", 2)), hexText("FFFFFC17 00000002 00000000"
                                                                                      " 6162"));
}

TEST(TheWireBytes, OfOnTimelineInfoChange) {
    EXPECT_EQ(wireOf<messages::OnTimelineInfoChange>(static_cast<unsigned char>(0x11), static_cast<unsigned char>(0x21),
                                                     static_cast<unsigned char>(0x31), 0x41424344U,
                                                     0x5152535455565758ULL, 0x6162636465666768ULL),
              hexText("11213141 42434451 52535455 56575861 62636465 666768"));
}

TEST(TheWireBytes, OfOnSelectedComponentChange) {
    EXPECT_EQ(wireOf<messages::OnSelectedComponentChange>(
                  0x11121314U, 0x21222324U, static_cast<unsigned short>(0x3132), static_cast<unsigned short>(0x4142),
                  static_cast<unsigned short>(0x5152), static_cast<unsigned short>(0x6162)),
              hexText("11121314 21222324 31324142 51526162"));
}

TEST(TheWireBytes, OfOnComponentInfoChange) {
    EXPECT_EQ(wireOf<messages::OnComponentInfoChange>(
                  static_cast<unsigned short>(0x1112), 0x21222324U, 0x31323334U, static_cast<unsigned short>(0x4142),
                  static_cast<unsigned short>(0x5152), static_cast<unsigned short>(0x6162),
                  static_cast<unsigned short>(0x7172), static_cast<unsigned short>(0x8182), 0x91929394U,
                  static_cast<unsigned short>(0xA1A2)),
              hexText("11122122 23243132 33344142 51526162 71728182 91929394 A1A2"));
}

TEST(TheWireBytes, OfOnAllTerminalStoped) {
    EXPECT_EQ(wireOf<messages::OnAllTerminalStoped>(), hexText("00"));
}

TEST(TheWireBytes, OfOnPtsNotify) {
    EXPECT_EQ(wireOf<messages::OnPtsNotify>(0x1112131415161718ULL, 0x2122232425262728ULL),
              hexText("11121314 15161718 21222324 25262728"));
}

TEST(TheWireBytes, OfOnSetAudioSourceFinished) {
    EXPECT_EQ(wireOf<messages::OnSetAudioSourceFinished>(0x11121314U, -1002), hexText("11121314 FFFFFC16"));
}

TEST(TheWireBytes, OfOnOSDStateChanged) {
    EXPECT_EQ(wireOf<messages::OnOSDStateChanged>(0x11121314U, 0x21222324U), hexText("11121314 21222324"));
}

TEST(TheWireBytes, OfOnDrmResultReply) {
    EXPECT_EQ(wireOf<messages::OnDrmResultReply>(0x1112131415161718ULL, static_cast<unsigned char>(0x21),
                                                 std::string("ab", 2), static_cast<unsigned short>(0x3132)),
              hexText("11121314 15161718 21000000 02000000 003132"
                      " 6162"));
}

TEST(TheWireBytes, OfOnCaDrmConnected) {
    EXPECT_EQ(wireOf<messages::OnCaDrmConnected>(0x1112131415161718ULL, static_cast<unsigned short>(0x2122),
                                                 static_cast<unsigned short>(0x3132)),
              hexText("11121314 15161718 21223132"));
}

TEST(TheWireBytes, OfOnCaDrmDisonnected) {
    EXPECT_EQ(
        wireOf<messages::OnCaDrmDisonnected>(static_cast<unsigned short>(0x1112), static_cast<unsigned short>(0x2122)),
        hexText("11122122"));
}

TEST(TheWireBytes, OfOnCaDrmSystemStatusChanged) {
    EXPECT_EQ(wireOf<messages::OnCaDrmSystemStatusChanged>(static_cast<unsigned short>(0x1112),
                                                           static_cast<unsigned short>(0x2122)),
              hexText("11122122"));
}

TEST(TheWireBytes, OfOnDATagsServicePmtDataChange) {
    EXPECT_EQ(wireOf<messages::OnDATagsServicePmtDataChange>(
                  static_cast<unsigned short>(0x1112), static_cast<unsigned short>(0x2122),
                  static_cast<unsigned short>(0x3132), -1004, std::string("ab", 2)),
              hexText("11122122 3132FFFF FC140000 00020000 0000"
                      " 6162"));
}

TEST(TheWireBytes, EncodeAnEmptyBlobAsNullInMemory) {
    const _OpenFilterMatchMask_t_struct structure{OpenFilterMatchMask_t{}};
    EXPECT_EQ(structure.mask.count, 0U);
    EXPECT_EQ(structure.mask.data, nullptr);
    EXPECT_EQ(structure.maskBits.data, nullptr);
    EXPECT_EQ(wireOf<messages::CmdFilterOpen>(std::string(), 0U, OpenFilterMatchMask_t{}),
              hexText("00000000 00000000 00000000 00000000 00000000 00000000 00000000"));
}

TEST(TheWireBytes, EncodeAnEmptyStringAsOneTerminatorInMemory) {
    _ovxDeserString_struct carrier = wire::String::store(std::string());
    ASSERT_NE(carrier.data, nullptr);
    EXPECT_EQ(carrier.length, 0U);
    EXPECT_EQ(carrier.data[0], '\0');
    wire::String::release(carrier);
}

TEST(TheWireBytes, OfAnEnumerationAreItsNumberUnchanged) {
    EXPECT_EQ(wireOf<messages::CmdSelectComponent>(static_cast<ComponentType>(-2)), hexText("FFFFFFFE"));
    EXPECT_EQ(wireOf<messages::CmdUnselectComponent>(static_cast<ComponentType>(0x12345678)), hexText("12345678"));
    EXPECT_EQ(wireOf<messages::CmdSendOpAppInstallStatus>(static_cast<OpappType>(0x7FFFFFFF),
                                                          static_cast<OpappInstallStatus>(-1)),
              hexText("7FFFFFFF FFFFFFFF"));
}
