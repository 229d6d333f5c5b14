// Files of records: written and read, whole, in parts and damaged.
#include "bus/pcapng.h"

#include <gmock/gmock.h>

#include <vector>

#include "some_records.h"

namespace {

const std::size_t kStart = bus::pcapngStart().size();

/// What a reader takes from the bytes, which come in parts.
struct Read {
    explicit Read(const std::string& bytes, std::size_t part = 1U << 20U) {
        bus::PcapngReader reader;
        for (std::size_t at = 0; at < bytes.size(); at += part) {
            reader.add(std::string_view(bytes).substr(at, part));
            bus::Record record;
            std::string problem;
            while (reader.take(record, problem)) {
                if (problem.empty()) {
                    records.push_back(record);
                } else {
                    problems.push_back(problem);
                }
            }
        }
        atEnd = reader.problemAtEnd();
    }
    std::vector<bus::Record> records;
    std::vector<std::string> problems;
    std::string atEnd;
};

std::string aFile() {
    bus::Record second = someRecord();
    second.bytes = "longer bytes, which end at no border";
    return bus::pcapngStart() + bus::pcapngBlock(someRecord()) + bus::pcapngBlock(second);
}

std::string with(std::string bytes, std::size_t at, char value) {
    bytes.at(at) = value;
    return bytes;
}

/// A file of one byte order that is as other programs write it.
std::string otherProgramsFile(bool isLittle, const std::string& packet) {
    std::string bytes;
    const auto add = [&](std::uint64_t word, unsigned int width) {
        for (unsigned int index = 0; index < width; ++index) {
            bytes += static_cast<char>(word >> 8U * (isLittle ? index : width - 1 - index) & 0xFFU);
        }
    };
    const auto words = [&](const std::vector<std::uint64_t>& all) {
        for (const std::uint64_t word : all) {
            add(word, 4);
        }
    };
    words({0x0A0D0D0A, 28, 0x1A2B3C4D});
    add(1, 2);
    add(0, 2);
    add(~std::uint64_t{0}, 8);
    words({28});
    words({1, 20});
    add(147, 2);
    add(0, 2);
    words({0, 20});
    words({5, 16, 0x11223344, 16});  // interface statistics, which nobody reads
    const std::uint64_t microseconds = 1767225600123456;
    const std::uint64_t size = packet.size();
    const std::uint64_t length = 32 + (size + 3) / 4 * 4;
    words({6, length, 0, microseconds >> 32U, microseconds & 0xFFFFFFFFU, size, size});
    bytes += packet;
    bytes.append((4 - size % 4) % 4, '\0');
    words({length});
    return bytes;
}

}  // namespace

TEST(AFileOfRecords, IsReadAsItWasWritten) {
    for (const std::size_t part : {std::size_t{1}, std::size_t{7}, std::size_t{1000}}) {
        const Read read(aFile(), part);
        ASSERT_EQ(read.records.size(), 2U);
        expectSame(read.records[0], someRecord());
        EXPECT_EQ(read.records[1].bytes, "longer bytes, which end at no border");
        EXPECT_THAT(read.problems, testing::IsEmpty());
        EXPECT_EQ(read.atEnd, "");
    }
}

TEST(AFileOfRecords, MayHaveBeenWrittenByAnotherProgram) {
    for (const bool isLittle : {false, true}) {
        const Read read(otherProgramsFile(isLittle, bus::pack(someRecord())));
        ASSERT_EQ(read.records.size(), 1U) << testing::PrintToString(read.problems);
        bus::Record expected = someRecord();
        expected.time = 1767225600123456000;
        expectSame(read.records[0], expected);
        EXPECT_EQ(read.atEnd, "");
    }
}

TEST(AFileOfRecords, MayConsistOfTwo) {
    EXPECT_EQ(Read(aFile() + otherProgramsFile(false, bus::pack(someRecord())) + aFile()).records.size(), 5U);
}

TEST(AFileOfRecords, IsReadBehindAPacketThatIsNoRecord) {
    const std::size_t second = kStart + bus::pcapngBlock(someRecord()).size();
    const Read read(with(aFile(), kStart + 28, 9));
    EXPECT_THAT(read.problems,
                testing::ElementsAre("at byte " + std::to_string(kStart) + ": record of version 9, 1 expected"));
    EXPECT_EQ(read.records.size(), 1U);
    const Read other(with(aFile(), second + 8, 1));
    EXPECT_THAT(other.problems, testing::ElementsAre("at byte " + std::to_string(second) +
                                                     ": a packet of interface 1, which is not described"));
    const Read tooLong(with(aFile(), kStart + 21, 1));
    EXPECT_THAT(tooLong.problems,
                testing::ElementsAre("at byte " + std::to_string(kStart) + ": a packet of 298 bytes in a block of 76"));
    const Read ethernet(with(aFile(), 28 + 8, 1));
    EXPECT_THAT(ethernet.problems,
                testing::Contains("at byte " + std::to_string(kStart) + ": a packet of link type 1, 147 expected"));
}

TEST(AFileOfRecords, EndsAtABlockWhoseEndIsUnknown) {
    const std::size_t second = kStart + bus::pcapngBlock(someRecord()).size();
    const Read read(with(aFile(), second + 4, 3));
    EXPECT_EQ(read.records.size(), 1U) << "what was good before it stays";
    EXPECT_THAT(read.problems,
                testing::ElementsAre("at byte " + std::to_string(second) + ": a block cannot have 3 bytes"));
    EXPECT_EQ(read.atEnd, "");
    const std::string differs = with(aFile(), second - 4, 0);
    EXPECT_THAT(Read(differs).problems, testing::ElementsAre("at byte " + std::to_string(kStart) +
                                                             ": a block has 76 bytes at its begin and 0 at its end"));
    const Read huge(with(aFile(), second + 7, '\x7F'));
    EXPECT_THAT(huge.problems, testing::ElementsAre(testing::HasSubstr("a block cannot have ")));
}

TEST(AFileOfRecords, IsRefusedIfItIsNone) {
    EXPECT_THAT(Read("text that is no file of packets").problems,
                testing::ElementsAre("at byte 0: no pcapng file: it does not begin with a section header"));
    EXPECT_THAT(Read(with(aFile(), 8, 0)).problems,
                testing::ElementsAre("at byte 0: a section header without a byte-order mark"));
    EXPECT_THAT(Read(with(aFile(), 12, 2)).problems,
                testing::ElementsAre("at byte 0: a section header of another version"));
    EXPECT_EQ(Read("").atEnd, "the file is empty");
    EXPECT_EQ(Read("abc").atEnd, "at byte 0: the file ends within a block, after 3 bytes of it");
}

TEST(AFileOfRecords, TellsWhereItWasCut) {
    const std::string file = aFile();
    for (std::size_t length = 1; length < file.size(); ++length) {
        const Read read(file.substr(0, length));
        EXPECT_THAT(read.problems, testing::IsEmpty()) << length;
        const std::size_t second = kStart + bus::pcapngBlock(someRecord()).size();
        const bool isBetween = length == 28 || length == kStart || length == second;
        EXPECT_EQ(read.atEnd.empty(), isBetween) << length << read.atEnd;
        EXPECT_EQ(read.records.size(), length >= second ? 1U : 0U) << length;
    }
}

TEST(AFileOfRecords, IsReadToItsEndWhateverByteIsWrong) {
    const std::string file = aFile();
    for (std::size_t at = 0; at < file.size(); ++at) {
        for (const char value : {'\x00', '\x01', '\x7F', '\xFF'}) {
            const Read read(with(file, at, value));
            EXPECT_LE(read.records.size() + read.problems.size(), 2U) << at;
        }
    }
}
