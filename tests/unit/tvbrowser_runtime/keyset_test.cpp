// Keysets, and the keys of the remote control.
#include <gmock/gmock.h>

#include "remote.h"

namespace tvbrowser {

constexpr KeyMask kAllOfTheRemote = 0x1BF;

std::vector<std::string> keysOf(const Keyset& keyset) {
    std::vector<std::string> names;
    for (const RemoteKey& key : kRemoteKeys) {
        if (keyset.has(key)) {
            names.emplace_back(key.name);
        }
    }
    return names;
}

std::vector<std::string> keysOf(KeyMask mask, const std::vector<unsigned int>& others = {}) {
    Keyset keyset;
    keyset.set(mask, others);
    return keysOf(keyset);
}

TEST(AKeyset, OfABroadcastRelatedApplicationIsEmptyAtFirst) {
    EXPECT_EQ(Keyset::initial(true).mask(), 0U);
    EXPECT_THAT(keysOf(Keyset::initial(true)), testing::IsEmpty());
}

TEST(AKeyset, OfABroadcastIndependentApplicationHasAllKeysOfPagesAtFirst) {
    EXPECT_EQ(Keyset::initial(false).mask(), kAllOfTheRemote);
    EXPECT_THAT(keysOf(Keyset::initial(false)), testing::SizeIs(27));
}

TEST(AKeyset, HasTheKeysOfItsBits) {
    EXPECT_THAT(keysOf(keyset::kRed), testing::ElementsAre("RED"));
    EXPECT_THAT(keysOf(keyset::kGreen), testing::ElementsAre("GREEN"));
    EXPECT_THAT(keysOf(keyset::kYellow), testing::ElementsAre("YELLOW"));
    EXPECT_THAT(keysOf(keyset::kBlue), testing::ElementsAre("BLUE"));
    EXPECT_THAT(keysOf(keyset::kNavigation), testing::ElementsAre("LEFT", "UP", "RIGHT", "DOWN", "ENTER", "BACK"));
    EXPECT_THAT(keysOf(keyset::kVcr),
                testing::ElementsAre("PLAY", "PAUSE", "PLAY_PAUSE", "STOP", "REWIND", "FAST_FWD"));
    EXPECT_THAT(keysOf(keyset::kInfo), testing::ElementsAre("INFO"));
    EXPECT_THAT(keysOf(keyset::kNumeric), testing::ElementsAre("0", "1", "2", "3", "4", "5", "6", "7", "8", "9"));
}

TEST(AKeyset, HasNoBitsWithoutKeys) {
    Keyset keyset;
    EXPECT_EQ(keyset.set(0xFFFFFFFF, {}), kAllOfTheRemote);
    EXPECT_EQ(keyset.set(keyset::kScroll | keyset::kAlpha | keyset::kOther, {}), 0U);
    EXPECT_EQ(keyset.set(keyset::kRed | keyset::kScroll, {}), keyset::kRed);
    EXPECT_EQ(keyset.mask(), keyset::kRed);
}

TEST(AKeyset, TakesOtherKeysOneByOne) {
    Keyset keyset;
    constexpr unsigned int kDigitOne = 49;
    constexpr unsigned int kUnknown = 9999;
    EXPECT_EQ(keyset.set(keyset::kRed | keyset::kOther, {kDigitOne, kUnknown}), keyset::kRed | keyset::kOther);
    EXPECT_THAT(keysOf(keyset), testing::ElementsAre("RED", "1"));
    EXPECT_THAT(keysOf(keyset::kRed, {kDigitOne}), testing::ElementsAre("RED"));
    EXPECT_EQ(keyset.set(keyset::kOther, {kUnknown}), 0U);
}

TEST(AKeyset, NeverHasTheTelevisionsKeys) {
    for (const char* name : {"EXIT", "CHANNEL_UP", "CHANNEL_DOWN"}) {
        Keyset keyset;
        EXPECT_EQ(keyset.set(keyset::kOther, {findKey(name)->code}), 0U) << name;
        EXPECT_FALSE(keyset.has(*findKey(name))) << name;
    }
}

TEST(TheRemoteControl, HasTheCodesOfTheStandard) {
    const std::map<std::string, unsigned int> codes = {{"RED", 403},      {"GREEN", 404},      {"YELLOW", 405},
                                                       {"BLUE", 406},     {"LEFT", 37},        {"UP", 38},
                                                       {"RIGHT", 39},     {"DOWN", 40},        {"ENTER", 13},
                                                       {"BACK", 461},     {"PLAY", 415},       {"PAUSE", 19},
                                                       {"STOP", 413},     {"INFO", 457},       {"0", 48},
                                                       {"9", 57},         {"PLAY_PAUSE", 463}, {"REWIND", 412},
                                                       {"FAST_FWD", 417}, {"CHANNEL_UP", 427}, {"CHANNEL_DOWN", 428}};
    for (const auto& [name, code] : codes) {
        ASSERT_NE(findKey(name), nullptr) << name;
        EXPECT_EQ(findKey(name)->code, code) << name;
    }
}

TEST(TheRemoteControl, HasEachNameAndCodeOnce) {
    std::set<std::string> names;
    std::set<unsigned int> codes;
    for (const RemoteKey& key : kRemoteKeys) {
        EXPECT_TRUE(names.insert(key.name).second) << key.name;
        EXPECT_TRUE(codes.insert(key.code).second) << key.code;
    }
}

TEST(TheRemoteControl, LeavesArrowsAndDigitsToTheEngine) {
    for (const char* name : {"LEFT", "ENTER", "0", "9"}) {
        EXPECT_TRUE(findKey(name)->isEngineKey) << name;
    }
    for (const char* name : {"RED", "BACK", "PLAY", "PAUSE", "INFO"}) {
        EXPECT_FALSE(findKey(name)->isEngineKey) << name;
    }
}

TEST(TheRemoteControl, HasNoOtherKeys) {
    for (const char* name : {"", "red", "10", "MENU"}) {
        EXPECT_EQ(findKey(name), nullptr) << name;
    }
}

}  // namespace tvbrowser
