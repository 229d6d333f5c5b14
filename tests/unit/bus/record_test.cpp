// The bytes of records.
#include "bus/record.h"

#include <gmock/gmock.h>

#include "some_records.h"

namespace {

std::string problemOf(const std::string& bytes) {
    std::string error;
    EXPECT_FALSE(bus::unpack(bytes, error));
    return error;
}

}  // namespace

TEST(ARecord, IsReadAsItWasWritten) {
    std::string error;
    const std::optional<bus::Record> read = bus::unpack(bus::pack(someRecord()), error);
    ASSERT_TRUE(read) << error;
    bus::Record expected = someRecord();
    expected.time = 0;
    expectSame(*read, expected);
}

TEST(ARecord, HasItsFixedBytes) {
    const std::string expected(
        "\x01\x03\x01\x01\x01\x02\x03\x04\x00\x01\x11\x70\x28\x67\x12\x5A\xFF\xFF\xFF\x95"
        "\x00\x00\x00\x09\x00\x08\x00\x03"
        "dvbshellwhy\x00\xFF\x0A",
        42);
    EXPECT_EQ(bus::pack(someRecord()), expected);
}

TEST(ARecord, CutsALongText) {
    bus::Record record = someRecord();
    record.text.assign(bus::kLongestText + 1, 'x');
    std::string error;
    const std::optional<bus::Record> read = bus::unpack(bus::pack(record), error);
    ASSERT_TRUE(read) << error;
    EXPECT_EQ(read->text, std::string(bus::kLongestText, 'x'));
    EXPECT_EQ(read->bytes, record.bytes);
}

TEST(ARecord, IsRefusedByTheFirstByteThatIsWrong) {
    const std::string bytes = bus::pack(someRecord());
    EXPECT_EQ(problemOf(bytes.substr(0, 27)), "record of 27 bytes, at least 28 expected");
    EXPECT_EQ(problemOf("\x02" + bytes.substr(1)), "record of version 2, 1 expected");
    const auto with = [bytes](std::size_t at, char value) {
        std::string changed = bytes;
        changed[at] = value;
        return changed;
    };
    EXPECT_EQ(problemOf(with(1, '\x07')), "no kind has the number 7 at offset 1");
    EXPECT_EQ(problemOf(with(2, '\x02')), "no direction has the number 2 at offset 2");
    EXPECT_EQ(problemOf(with(3, '\x02')), "no side has the number 2 at offset 3");
    EXPECT_EQ(problemOf(with(26, '\x01')), "the texts have 267 bytes, 14 are left");
}

TEST(ARecord, NamesItsKind) {
    std::string names;
    for (unsigned int kind = 0; kind <= static_cast<unsigned int>(bus::kLastKind); ++kind) {
        names += std::string(bus::nameOf(static_cast<bus::Kind>(kind))) + " ";
    }
    EXPECT_EQ(names, "message connected disconnected refused section_queued section_dropped lost ");
}
