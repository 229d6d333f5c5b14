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

TEST(AnAitSection, ReadsTheVersionFromFiveBits) {
    Bytes bytes = aitBytes(0, 0, 0, 0);
    bytes[5] = 0xC3;
    EXPECT_EQ(AITSection(bytes).version, 1);
    bytes[5] = 0xFF;
    EXPECT_EQ(AITSection(bytes).version, 31);
}

TEST(AnAitSection, IsValidWithEightBytes) {
    Bytes bytes = {0x74, 0xB0, 0x05, 0x00, 0x10, 0xC3, 0x01, 0x02};
    const AITSection section(bytes);
    EXPECT_TRUE(section.valid);
    EXPECT_EQ(section.crc, 0x10C30102U);
    EXPECT_EQ(section.sectionCount, 3);
}

TEST(AnAitSection, IsInvalidWithSevenBytes) {
    Bytes bytes = {0x74, 0xB0, 0x05, 0x00, 0x10, 0xC3, 0x01};
    const AITSection section(bytes);
    EXPECT_FALSE(section.valid);
    EXPECT_EQ(section.data, bytes);
    EXPECT_EQ(section.version, 0);
    EXPECT_EQ(section.sectionNumber, 0);
    EXPECT_EQ(section.sectionCount, 0);
    EXPECT_EQ(section.crc, 0U);
}

TEST(AnAitSection, KeepsOldNumbersOnTooFewBytes) {
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

TEST(AnAitSection, ThrowsForANegativeLengthBehindItsTrace) {
    const std::uint8_t byte = 0;
    recording::reset();
    EXPECT_THROW(AITSection(&byte, -1), std::bad_alloc);
    EXPECT_THAT(traceTexts(), testing::ElementsAre(testing::HasSubstr("AITSection::AITSection(const ")));
}

TEST(AnAitSection, DumpsItsBytesOnRequest) {
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

TEST(AnAitSection, DumpsNoBytesThatAreNotASection) {
    Bytes seven = {0x74, 0xB0, 0x05, 0x00, 0x10, 0xC3, 0x01};
    const AITSection invalid(seven);
    recording::reset();
    invalid.dump(true);
    AITSection empty;
    empty.valid = true;
    empty.dump(true);
    EXPECT_TRUE(recording::dumps().empty());
    EXPECT_THAT(
        allMessages(),
        testing::ElementsAre("DumpAITSection: ver:0,sn:0/-1,crc:00000000(valid:0)\n", "DumpAITSection:  no data.\n",
                             "DumpAITSection: ver:0,sn:0/-1,crc:00000000(valid:1)\n", "DumpAITSection:  no data.\n"));
}

TEST(AnAitSection, DumpsOnlyItsHeaderUnlessAsked) {
    Bytes bytes = aitBytes(31, 255, 254, 0xFEDCBA98);
    const AITSection section(bytes);
    recording::reset();
    section.dump(false);
    AITSection().dump(false);
    EXPECT_TRUE(recording::dumps().empty());
    EXPECT_THAT(allMessages(), testing::ElementsAre("DumpAITSection: ver:31,sn:255/254,crc:FEDCBA98(valid:1)\n",
                                                    "DumpAITSection: ver:0,sn:0/-1,crc:00000000(valid:0)\n"));
}

TEST(AnAitSection, TracesADumpBeforeItsLine) {
    Bytes bytes = aitBytes(1, 0, 0, 7);
    const AITSection section(bytes);
    recording::reset();
    section.dump(true);
    ASSERT_EQ(recording::log().size(), 2U);
    EXPECT_EQ(recording::log()[0].level, blog::kTrace);
    EXPECT_EQ(recording::log()[1].function, "dump");
}

TEST(AnAitSection, FormatsNoLineWhoseLevelIsOff) {
    Bytes bytes = aitBytes(1, 0, 0, 7);
    recording::reset();
    recording::setLogThreshold(4999);
    const AITSection section(bytes);
    EXPECT_EQ(recording::levelChecks(), 2U);
    EXPECT_EQ(recording::formattedLines(), 0U);
    recording::setLogThreshold(0);
    section.dump(false);
    EXPECT_EQ(recording::levelChecks(), 4U);
    EXPECT_EQ(recording::formattedLines(), 0U);
}

TEST(AnAitSection, ReadsNothingFromSevenBytes) {
    const Bytes bytes = aitBytes(5, 3, 7, 0x01020304);
    const Bytes others = aitBytes(6, 4, 8, 0x05060708, 12);
    AITSection section;
    section.calculateParameters(bytes.data(), static_cast<int>(bytes.size()));
    section.calculateParameters(others.data(), 7);
    section.calculateParameters(others.data(), 0);
    section.calculateParameters(others.data(), -1);
    EXPECT_EQ(section.version, 5);
    EXPECT_EQ(section.sectionNumber, 3);
    EXPECT_EQ(section.sectionCount, 8);
    EXPECT_EQ(section.crc, 0x01020304U);
    section.calculateParameters(others.data(), 12);
    EXPECT_EQ(section.sectionNumber, 4);
}

TEST(AnAitSection, LooksAtNoOtherByte) {
    Bytes bytes(20, 0);
    bytes[5] = 0x02;
    AITSection section(bytes);
    EXPECT_TRUE(section.valid) << "whatever table_id, section_length and the rest say";
    EXPECT_EQ(section.version, 1);
    EXPECT_EQ(section.sectionNumber, 0);
    EXPECT_EQ(section.sectionCount, 1);
    EXPECT_EQ(section.crc, 0U);
    section.replaceData(Bytes(20, 0xFF));
    EXPECT_EQ(section.version, 31);
    EXPECT_EQ(section.sectionNumber, 255);
    EXPECT_EQ(section.sectionCount, 256);
    EXPECT_EQ(section.crc, 0xFFFFFFFFU);
}

TEST(AnAitSection, TakesReplacedDataWhole) {
    Bytes bytes = aitBytes(5, 3, 7, 0x01020304, 40);
    AITSection section(bytes);
    const Bytes shorter = aitBytes(6, 4, 8, 0x05060708, 12);
    section.replaceData(shorter.data(), 12);
    EXPECT_EQ(section.data, shorter);
    EXPECT_EQ(section.version, 6);
    EXPECT_EQ(section.sectionNumber, 4);
    EXPECT_EQ(section.sectionCount, 9);
    EXPECT_EQ(section.crc, 0x05060708U);
    EXPECT_TRUE(section.valid);
    section.replaceData(bytes);
    EXPECT_EQ(section.data, bytes);
    EXPECT_EQ(section.version, 5);
    section.replaceData(shorter.data(), 7);
    EXPECT_EQ(section.data, Bytes(shorter.begin(), shorter.begin() + 7));
    EXPECT_FALSE(section.valid);
    EXPECT_EQ(section.sectionCount, 0);
    EXPECT_EQ(section.sectionNumber, 3);
}

TEST(AnAitSection, DoesNotChangeItsSourceBytes) {
    Bytes bytes = aitBytes(5, 3, 7, 0x01020304);
    const Bytes before = bytes;
    AITSection section(bytes);
    section.replaceData(bytes);
    EXPECT_EQ(bytes, before);
}

TEST(AnAitSection, LeavesItsValidityAloneWhenItOnlyReads) {
    const Bytes bytes = aitBytes(1, 0, 0, 7);
    AITSection section;
    section.calculateParameters(bytes.data(), static_cast<int>(bytes.size()));
    EXPECT_FALSE(section.valid);
    EXPECT_EQ(section.version, 1);
}

TEST(AnAitSection, CopiesAllValuesEvenToItself) {
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
        EXPECT_EQ(section->sectionNumber, 1);
        EXPECT_EQ(section->sectionCount, 3);
        EXPECT_EQ(section->crc, 99U);
        EXPECT_TRUE(section->valid);
    }
    assigned = AITSection();
    EXPECT_TRUE(assigned.data.empty());
    EXPECT_EQ(assigned.sectionNumber, 0);
    EXPECT_EQ(assigned.sectionCount, 0);
    EXPECT_FALSE(assigned.valid);
}

TEST(AnAitSection, TracesEachOperationWithItsWholeSignature) {
    Bytes bytes = aitBytes(1, 0, 0, 7);
    const int length = static_cast<int>(bytes.size());
    const auto expectTraced = [](const auto& operation, const std::vector<std::string>& signatures) {
        recording::reset();
        operation();
        const std::vector<std::string> texts = traceTexts();
        ASSERT_EQ(texts.size(), signatures.size());
        EXPECT_EQ(recording::log().front().text, texts.front()) << "before any other line";
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
