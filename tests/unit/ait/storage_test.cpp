// Which sections the storage of a channel takes, and what it returns.
#include "ait_fixture.h"

using velmora::dvbservice::AITStorage;

namespace {

constexpr const char* kFile = "browser_AIT_storage.cpp";

}  // namespace

TEST(AnAitStorage, StoresASectionOnce) {
    AITStorage storage(aitBytes(1, 0, 1, 100));
    EXPECT_EQ(storage.getAITSectionCount(), 2);
    EXPECT_FALSE(storage.saveAITSection(aitBytes(1, 0, 1, 100)));
    EXPECT_TRUE(storage.saveAITSection(aitBytes(1, 1, 1, 101)));
    EXPECT_EQ(storage.getAITSection(0).data, aitBytes(1, 0, 1, 100));
    EXPECT_EQ(storage.getAITSection(1).data, aitBytes(1, 1, 1, 101));
}

TEST(AnAitStorage, WritesWhatItDoesWithASection) {
    recording::reset();
    AITStorage storage(aitBytes(3, 0, 1, 0xABCDEF01));
    EXPECT_THAT(messagesOf(kFile),
                testing::ElementsAre("AIT version changed: 0 -> 3\n", "Add AIT Section: 0/1, ver: 3,crc:ABCDEF01\n"));
    EXPECT_THAT(messagesOf("aitsection.cpp"),
                testing::ElementsAre("DumpAITSection: ver:3,sn:0/1,crc:ABCDEF01(valid:0)\n"));
    recording::reset();
    storage.saveAITSection(aitBytes(3, 0, 1, 0xABCDEF01));
    EXPECT_THAT(messagesOf(kFile), testing::ElementsAre("No Need to update Section: 0/1, ver: 3,crc:ABCDEF01\n"));
}

TEST(AnAitStorage, CountsZeroSectionsForAFirstVersionZero) {
    AITStorage storage(aitBytes(0, 0, 2, 1));
    EXPECT_EQ(storage.getAITSectionCount(), 0);
    EXPECT_TRUE(storage.getAITSection(0).valid);
    EXPECT_TRUE(storage.saveAITSection(aitBytes(1, 0, 4, 2)));
    EXPECT_EQ(storage.getAITSectionCount(), 5);
}

TEST(AnAitStorage, GoesByTheCrcAlone) {
    AITStorage storage(aitBytes(1, 0, 0, 1));
    Bytes otherContent = aitBytes(1, 0, 0, 1);
    otherContent[9] ^= 0xFF;
    EXPECT_FALSE(storage.saveAITSection(otherContent));
    EXPECT_TRUE(storage.saveAITSection(aitBytes(1, 0, 0, 2)));
}

TEST(AnAitStorage, NotesANewVersionWithTheSameCrc) {
    AITStorage storage(aitBytes(1, 0, 0, 1));
    EXPECT_FALSE(storage.saveAITSection(aitBytes(2, 0, 5, 1)));
    EXPECT_EQ(storage.getAITSectionCount(), 6);
    EXPECT_EQ(storage.getAITSection(0).version, 1);
}

TEST(AnAitStorage, DoesNotClearTheSlotsOfAnOldVersion) {
    AITStorage storage(aitBytes(1, 0, 1, 1));
    storage.saveAITSection(aitBytes(1, 1, 1, 2));
    storage.saveAITSection(aitBytes(2, 0, 1, 3));
    EXPECT_EQ(storage.getAITSection(1).version, 1);
    EXPECT_TRUE(storage.getAITSection(1).valid);
}

TEST(AnAitStorage, TakesTwelveSectionsAndDumpsTheNext) {
    AITStorage storage(aitBytes(1, 11, 20, 1));
    EXPECT_TRUE(storage.getAITSection(11).valid);
    recording::reset();
    EXPECT_FALSE(storage.saveAITSection(aitBytes(2, 12, 30, 2)));
    ASSERT_EQ(recording::dumps().size(), 1U);
    EXPECT_EQ(recording::dumps()[0].title, "Too many AIT sections in this channel?");
    EXPECT_EQ(recording::dumps()[0].bytes, aitBytes(2, 12, 30, 2));
    EXPECT_EQ(recording::dumps()[0].value, 12);
    EXPECT_EQ(storage.getAITSectionCount(), 21) << "nothing changes, the version neither";
}

TEST(AnAitStorage, GivesItsLastSlotForAnIndexAboveIt) {
    AITStorage storage(aitBytes(1, 11, 11, 1));
    recording::reset();
    EXPECT_EQ(&storage.getAITSection(12), &storage.getAITSection(11));
    EXPECT_THAT(
        recording::logOf("getAITSection"),
        testing::ElementsAre(logged::tagged(kFailure, kTag, kFile, "getAITSection", "AIT section index over flow.\n")));
}

TEST(AnAitStorage, StoresASectionWhoseCrcIsZero) {
    AITStorage storage(aitBytes(1, 0, 1, 0));
    EXPECT_TRUE(storage.getAITSection(0).valid);
    EXPECT_TRUE(storage.saveAITSection(aitBytes(1, 1, 1, 0)));
    EXPECT_TRUE(storage.getAITSection(1).valid);
    EXPECT_FALSE(storage.saveAITSection(aitBytes(1, 1, 1, 0)));
}

TEST(AnAitStorage, TakesALowerVersionForAChange) {
    AITStorage storage(aitBytes(5, 0, 1, 1));
    recording::reset();
    EXPECT_TRUE(storage.saveAITSection(aitBytes(3, 0, 3, 2)));
    EXPECT_THAT(allMessages(),
                testing::ElementsAre("DumpAITSection: ver:3,sn:0/3,crc:00000002(valid:0)\n",
                                     "AIT version changed: 5 -> 3\n", "Add AIT Section: 0/3, ver: 3,crc:00000002\n"));
    EXPECT_EQ(storage.getAITSectionCount(), 4);
    EXPECT_TRUE(storage.saveAITSection(aitBytes(0, 0, 4, 3)));
    EXPECT_EQ(storage.getAITSectionCount(), 5) << "version 0 is one too";
}

TEST(AnAitStorage, KeepsTheCountOfTheVersionChange) {
    AITStorage storage(aitBytes(1, 3, 4, 1));
    recording::reset();
    EXPECT_TRUE(storage.saveAITSection(aitBytes(1, 1, 9, 2)));
    EXPECT_EQ(storage.getAITSectionCount(), 5);
    EXPECT_FALSE(storage.saveAITSection(aitBytes(1, 1, 7, 2)));
    EXPECT_EQ(storage.getAITSectionCount(), 5);
    EXPECT_THAT(messagesOf(kFile), testing::ElementsAre("Add AIT Section: 1/9, ver: 1,crc:00000002\n",
                                                        "No Need to update Section: 1/7, ver: 1,crc:00000002\n"));
}

TEST(AnAitStorage, LogsANewVersionBeforeARepetition) {
    AITStorage storage(aitBytes(1, 0, 0, 7));
    recording::reset();
    EXPECT_FALSE(storage.saveAITSection(aitBytes(2, 0, 5, 7)));
    EXPECT_THAT(allMessages(), testing::ElementsAre("DumpAITSection: ver:2,sn:0/5,crc:00000007(valid:0)\n",
                                                    "AIT version changed: 1 -> 2\n",
                                                    "No Need to update Section: 0/5, ver: 2,crc:00000007\n"));
    recording::reset();
    EXPECT_FALSE(storage.saveAITSection(aitBytes(2, 0, 5, 7)));
    EXPECT_THAT(allMessages(), testing::ElementsAre("DumpAITSection: ver:2,sn:0/5,crc:00000007(valid:0)\n",
                                                    "No Need to update Section: 0/5, ver: 2,crc:00000007\n"))
        << "the version is known";
}

TEST(AnAitStorage, StoresEveryNewCrc) {
    AITStorage storage(aitBytes(1, 0, 0, 7));
    EXPECT_TRUE(storage.saveAITSection(aitBytes(1, 0, 0, 8)));
    EXPECT_EQ(storage.getAITSection(0).data, aitBytes(1, 0, 0, 8));
    EXPECT_TRUE(storage.saveAITSection(aitBytes(2, 0, 0, 7)));
    EXPECT_EQ(storage.getAITSection(0).data, aitBytes(2, 0, 0, 7));
    EXPECT_EQ(storage.getAITSection(0).version, 2);
}

TEST(AnAitStorage, ComparesTheCrcOfTheSameNumberAlone) {
    AITStorage storage(aitBytes(1, 0, 1, 7));
    EXPECT_TRUE(storage.saveAITSection(aitBytes(1, 1, 1, 7)));
}

TEST(AnAitStorage, LogsOnlyTheHeaderOfARefusedSection) {
    AITStorage storage(aitBytes(1, 0, 1, 7));
    for (const unsigned int number : {12U, 255U}) {
        recording::reset();
        EXPECT_FALSE(storage.saveAITSection(aitBytes(2, number, 3, 8)));
        EXPECT_THAT(allMessages(), testing::ElementsAre("DumpAITSection: ver:2,sn:" + std::to_string(number) +
                                                        "/3,crc:00000008(valid:0)\n"));
        EXPECT_EQ(recording::dumps().size(), 1U);
    }
    recording::reset();
    EXPECT_TRUE(storage.saveAITSection(aitBytes(1, 11, 12, 9)));
    EXPECT_EQ(storage.getAITSectionCount(), 2) << "the version that was refused was not noted";
    EXPECT_TRUE(recording::dumps().empty());
}

TEST(AnAitStorage, BeginsEmptyWhenItsFirstSectionIsRefused) {
    const AITStorage storage(aitBytes(1, 12, 20, 5));
    EXPECT_EQ(storage.getAITSectionCount(), 0);
    for (int index = 0; index < AITStorage::kSlots; ++index) {
        EXPECT_FALSE(storage.getAITSection(index).valid);
        EXPECT_TRUE(storage.getAITSection(index).data.empty());
    }
}

TEST(AnAitStorage, StoresTooShortSectionsEachTime) {
    AITStorage storage(Bytes(7, 0xFF));
    EXPECT_EQ(storage.getAITSection(0).data, Bytes(7, 0xFF));
    EXPECT_FALSE(storage.getAITSection(0).valid);
    EXPECT_TRUE(storage.saveAITSection(Bytes(7, 0xFF)));
}

TEST(AnAitStorage, ReturnsSlotsSilently) {
    const AITStorage storage(aitBytes(1, 11, 11, 1));
    recording::reset();
    EXPECT_EQ(storage.getAITSection(11).data, aitBytes(1, 11, 11, 1));
    EXPECT_EQ(&storage.getAITSection(11) - &storage.getAITSection(0), 11);
    EXPECT_TRUE(recording::log().empty());
    storage.getAITSection(0x7FFFFFFF);
    EXPECT_THAT(allMessages(), testing::ElementsAre("AIT section index over flow.\n"));
}

TEST(AnAitStorage, FormatsNoLineWhoseLevelIsOff) {
    recording::reset();
    recording::setLogThreshold(0);
    AITStorage storage(aitBytes(1, 0, 0, 1));
    storage.saveAITSection(aitBytes(1, 0, 0, 1));
    storage.getAITSection(12);
    EXPECT_GT(recording::levelChecks(), 5U);
    EXPECT_EQ(recording::formattedLines(), 0U);
}
