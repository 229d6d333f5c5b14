// The AIT section record.
#include <new>

#include "ait_fixture.h"

using velmora::dvbservice::AITSection;

namespace {

constexpr const char* kFile = "aitsection.cpp";

std::vector<std::string> traceTexts() {
    std::vector<std::string> texts;
    for (const recording::LogLine& line : recording::log()) {
        if (line.level == blog::kTrace) {
            texts.push_back(line.text);
        }
    }
    return texts;
}

}  // namespace

TEST(AnAitSection, BeginsEmptyAndInvalid) {
    const AITSection section;
    EXPECT_TRUE(section.data.empty());
    EXPECT_EQ(section.version, 0);
    EXPECT_EQ(section.sectionNumber, 0);
    EXPECT_EQ(section.sectionCount, 0);
    EXPECT_EQ(section.crc, 0U);
    EXPECT_FALSE(section.valid);
}

TEST(AnAitSection, ReadsItsHeaderFromTheBytes) {
    Bytes bytes = aitBytes(30, 2, 4, 0xDEADBEEF);
    const AITSection fromVector(bytes);
    const AITSection fromPointer(bytes.data(), static_cast<int>(bytes.size()));
    for (const AITSection* section : {&fromVector, &fromPointer}) {
        EXPECT_EQ(section->data, bytes);
        EXPECT_EQ(section->version, 30);
        EXPECT_EQ(section->sectionNumber, 2);
        EXPECT_EQ(section->sectionCount, 5);
        EXPECT_EQ(section->crc, 0xDEADBEEFU);
        EXPECT_TRUE(section->valid);
    }
}

TEST(AnAitSection, ReadsTheVersionFromTheMiddleBitsOfItsByte) {
    Bytes bytes = aitBytes(0, 0, 0, 0);
    bytes[5] = 0xC3;
    EXPECT_EQ(AITSection(bytes).version, 1);
    bytes[5] = 0xFF;
    EXPECT_EQ(AITSection(bytes).version, 31);
}

TEST(AnAitSection, OfEightBytesIsValidAndItsCrcOverlapsTheHeader) {
    Bytes bytes = {0x74, 0xB0, 0x05, 0x00, 0x10, 0xC3, 0x01, 0x02};
    const AITSection section(bytes);
    EXPECT_TRUE(section.valid);
    EXPECT_EQ(section.crc, 0x10C30102U);
    EXPECT_EQ(section.sectionCount, 3);
}

TEST(AnAitSection, OfSevenBytesIsInvalidWithAllNumbersZero) {
    Bytes bytes = {0x74, 0xB0, 0x05, 0x00, 0x10, 0xC3, 0x01};
    const AITSection section(bytes);
    EXPECT_FALSE(section.valid);
    EXPECT_EQ(section.data, bytes);
    EXPECT_EQ(section.version, 0);
    EXPECT_EQ(section.sectionCount, 0);
    EXPECT_EQ(section.crc, 0U);
}

TEST(AnAitSection, KeepsItsOldNumbersWhenItsDataIsReplacedByTooFewBytes) {
    Bytes bytes = aitBytes(5, 3, 7, 0x01020304);
    AITSection section(bytes);
    section.replaceData(Bytes(7, 0xFF));
    EXPECT_FALSE(section.valid);
    EXPECT_EQ(section.sectionCount, 0);
    EXPECT_EQ(section.version, 5);
    EXPECT_EQ(section.sectionNumber, 3);
    EXPECT_EQ(section.crc, 0x01020304U);
    EXPECT_EQ(section.data, Bytes(7, 0xFF));
    section.replaceData(bytes.data(), static_cast<int>(bytes.size()));
    EXPECT_TRUE(section.valid);
    EXPECT_EQ(section.sectionCount, 8);
}

TEST(AnAitSection, CountsUpToTwoHundredAndFiftySix) {
    Bytes bytes = aitBytes(1, 9, 0xFF, 1);
    const AITSection section(bytes);
    EXPECT_EQ(section.sectionCount, 256);
    recording::reset();
    section.dump(false);
    EXPECT_THAT(recording::logOf("dump"),
                testing::ElementsAre(logged::tagged(kOrdinary, kTag, kFile, "dump",
                                                    "DumpAITSection: ver:1,sn:9/255,crc:00000001(valid:1)\n")));
}

TEST(AnAitSection, ThrowsForANegativeLength) {
    const std::uint8_t byte = 0;
    EXPECT_THROW(AITSection(&byte, -1), std::bad_alloc);
}

TEST(AnAitSection, DumpsItsBytesOnRequestAndSaysWhenThereAreNone) {
    Bytes bytes = aitBytes(1, 0, 0, 7);
    const AITSection section(bytes);
    recording::reset();
    section.dump(true);
    ASSERT_EQ(recording::dumps().size(), 1U);
    EXPECT_EQ(recording::dumps()[0].title, "DumpAITSection: ");
    EXPECT_EQ(recording::dumps()[0].bytes, bytes);
    EXPECT_EQ(recording::dumps()[0].value, 1);
    recording::reset();
    AITSection().dump(true);
    EXPECT_TRUE(recording::dumps().empty());
    EXPECT_THAT(messagesOf(kFile), testing::ElementsAre("DumpAITSection: ver:0,sn:0/-1,crc:00000000(valid:0)\n",
                                                        "DumpAITSection:  no data.\n"));
}

TEST(AnAitSection, LeavesItsValidityAloneWhenItOnlyReads) {
    const Bytes bytes = aitBytes(1, 0, 0, 7);
    AITSection section;
    section.calculateParameters(bytes.data(), static_cast<int>(bytes.size()));
    EXPECT_FALSE(section.valid);
    EXPECT_EQ(section.version, 1);
}

TEST(AnAitSection, IsCopiedWithAllItsValuesAndToItselfWithoutHarm) {
    Bytes bytes = aitBytes(4, 1, 2, 99);
    const AITSection original(bytes);
    AITSection copy(original);
    AITSection assigned;
    assigned = original;
    AITSection& same = assigned;
    assigned = same;
    for (const AITSection* section : {&copy, &assigned}) {
        EXPECT_EQ(section->data, bytes);
        EXPECT_EQ(section->version, 4);
        EXPECT_EQ(section->crc, 99U);
        EXPECT_TRUE(section->valid);
    }
}

TEST(AnAitSection, TracesEachOperationWithItsWholeSignature) {
    Bytes bytes = aitBytes(1, 0, 0, 7);
    const int length = static_cast<int>(bytes.size());
    const auto expectTraced = [](const auto& operation, const std::vector<std::string>& signatures) {
        recording::reset();
        operation();
        const std::vector<std::string> texts = traceTexts();
        ASSERT_EQ(texts.size(), signatures.size());
        for (std::size_t index = 0; index < texts.size(); ++index) {
            EXPECT_THAT(texts[index],
                        testing::MatchesRegex("\\[TRACE\\] aitsection\\.cpp:[0-9]+:[^\n]*AITSection::[^\n]*\n"));
            EXPECT_THAT(texts[index], testing::HasSubstr("velmora::dvbservice::AITSection::" + signatures[index]));
        }
    };
    const std::string reads = "calculateParameters(const ";
    AITSection* section = nullptr;
    expectTraced([&] { section = new AITSection; }, {"AITSection()"});
    expectTraced([&] { delete section; }, {"~AITSection()"});
    expectTraced([&] { section = new AITSection(bytes); }, {"AITSection(std::vector<", reads});
    AITSection* copy = nullptr;
    expectTraced([&] { copy = new AITSection(*section); }, {"AITSection(const velmora"});
    expectTraced([&] { *copy = *section; }, {"operator=(const velmora"});
    const AITSection& same = *copy;
    expectTraced([&] { *copy = same; }, {"operator=("});
    delete copy;
    expectTraced([&] { copy = new AITSection(bytes.data(), length); }, {"AITSection(const ", reads});
    expectTraced([&] { copy->replaceData(Bytes()); }, {"replaceData(std::vector<", reads});
    expectTraced([&] { copy->replaceData(bytes.data(), length); }, {"replaceData(const ", reads});
    expectTraced([&] { copy->calculateParameters(bytes.data(), length); }, {reads});
    expectTraced([&] { copy->dump(false); }, {"dump(bool) const"});
    delete copy;
    delete section;
}
