// Which bytes count as a section message, at the limits of its lengths.
#include <gtest/gtest.h>

#include <cstring>

#include "velmora/msgqueue/ipc_message_queue.h"

using velmora::msgqueue::SectionDataIPCMessage;

namespace {

using Bytes = std::vector<std::uint8_t>;

/// A message with these lengths, even when they do not match the data.
Bytes messageWith(std::uint32_t nameLength, const std::string& name, std::uint32_t sectionLength, std::size_t section) {
    Bytes bytes(2 * sizeof nameLength + name.size() + section, 0x42);
    std::memcpy(bytes.data(), &nameLength, sizeof nameLength);
    std::memcpy(bytes.data() + sizeof nameLength, name.data(), name.size());
    std::memcpy(bytes.data() + sizeof nameLength + name.size(), &sectionLength, sizeof sectionLength);
    return bytes;
}

/// A message with a reader's buffer.
class Reader : public SectionDataIPCMessage {
public:
    Reader() { data = new std::uint8_t[kBufferSize]; }
    bool takes(const Bytes& bytes) { return decode(bytes.data(), bytes.size()); }
};

}  // namespace

TEST(ASectionMessage, IsReadBackAsItWasWritten) {
    Reader reader;
    ASSERT_TRUE(reader.takes(messageWith(4, "name", 3, 3)));
    EXPECT_EQ(reader.sessionName, "name");
    EXPECT_EQ(reader.dataLength, 3U);
    EXPECT_EQ(Bytes(reader.data, reader.data + 3), Bytes({0x42, 0x42, 0x42}));
    EXPECT_TRUE(reader.takes(messageWith(0, "", 0, 0)));
    EXPECT_EQ(reader.sessionName, "");
    EXPECT_EQ(reader.dataLength, 0U);
}

TEST(ASectionMessage, RefusesANameLongerThanItself) {
    Reader reader;
    EXPECT_FALSE(reader.takes(messageWith(5, "name", 0, 0)));
    EXPECT_FALSE(reader.takes(messageWith(8, "name", 3, 3)));
    EXPECT_FALSE(reader.takes(messageWith(0xFFFFFFFF, "name", 3, 3)));
}

TEST(ASectionMessage, RefusesASectionOfTheWrongLength) {
    Reader reader;
    EXPECT_FALSE(reader.takes(messageWith(4, "name", 3, 2))) << "one byte is missing";
    EXPECT_FALSE(reader.takes(messageWith(4, "name", 3, 4))) << "one byte stands behind";
    EXPECT_FALSE(reader.takes(messageWith(4, "name", 0xFFFFFFFF, 4)));
}

TEST(ASectionMessage, WithoutBothLengthsIsRefused) {
    Reader reader;
    EXPECT_FALSE(reader.takes({}));
    EXPECT_FALSE(reader.takes(Bytes(7)));
    EXPECT_TRUE(reader.takes(Bytes(8)));
}

TEST(ASectionMessage, FillsAReadersBufferAndNoMore) {
    Reader reader;
    EXPECT_TRUE(reader.takes(messageWith(1, "n", Reader::kBufferSize, Reader::kBufferSize)));
    EXPECT_EQ(reader.dataLength, 8192U);
    EXPECT_FALSE(reader.takes(messageWith(1, "n", Reader::kBufferSize + 1, Reader::kBufferSize + 1)));
    SectionDataIPCMessage without;
    const Bytes message = messageWith(1, "n", 1, 1);
    EXPECT_FALSE(without.decode(message.data(), message.size())) << "there is no buffer to read into";
}

TEST(ASectionMessage, IsWrittenOnlyWhereItFits) {
    Reader message;
    message.sessionName = "name";
    message.dataLength = 3;
    std::memset(message.data, 0x42, 3);
    Bytes bytes(15, 0);
    EXPECT_EQ(message.encode(bytes.data(), 14), 0U);
    EXPECT_EQ(message.encode(bytes.data(), 15), 15U);
    EXPECT_EQ(bytes, messageWith(4, "name", 3, 3));
}
