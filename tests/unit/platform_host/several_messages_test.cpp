// Messages that a service holds, and the packets in which they leave.
#include "platform/host/several_messages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <future>
#include <optional>

#include "eventually.h"
#include "members.h"
#include "own_log.h"
#include "platform/host/held_messages.h"
#include "raw_client.h"

namespace {

using host::HeldMessages;
using host::ReceivedMessages;
using host::SeveralMessages;
using testing::ElementsAre;
using toy::Member;
constexpr std::size_t kUnlimited = 1U << 20U;

std::vector<std::uint8_t> bytesOf(const std::string& text) {
    return {text.begin(), text.end()};
}

bool add(SeveralMessages& messages, const std::string& text) {
    return messages.add(bytesOf(text).data(), text.size());
}

std::string packetOf(const SeveralMessages& messages) {
    const SeveralMessages::Packet packet = messages.packet();
    return {reinterpret_cast<const char*>(packet.bytes), packet.length};
}

/// The messages behind the mark of a packet, and the error that ends them, if any.
std::vector<std::string> read(std::vector<std::uint8_t> rest) {
    std::vector<std::string> all;
    ReceivedMessages messages(rest.data(), rest.size());
    ReceivedMessages::Message message{};
    std::string error;
    while (messages.next(message, error)) {
        message.bytes[message.length] = 0xEE;  // as a decoder that ends a text by a zero
        all.emplace_back(reinterpret_cast<const char*>(message.bytes), message.length);
    }
    if (!error.empty()) {
        all.push_back(error);
    }
    return all;
}

/// A service with a client that counts packets, and one that takes the messages out of them.
class AServiceThatHolds : public testing::Test {
protected:
    AServiceThatHolds() {
        EXPECT_EQ(service.start(), 0);
        raw.emplace("toy");
        EXPECT_TRUE(eventually([&] { return service.connected == 1; }));
        rawPeer = service.lastPeer;
        EXPECT_EQ(client.start(), 0);
        EXPECT_TRUE(eventually([&] { return service.connected == 2; }));
    }

    std::vector<std::uint32_t> numbers() const {
        std::vector<std::uint32_t> all;
        for (const toy::Message& message : client.received()) {
            all.push_back(message.number);
        }
        return all;
    }

    HeldMessages& held = HeldMessages::instance();
    Member service{frame::CouplingModeService};
    Member client{frame::CouplingModeClient};
    std::optional<RawClient> raw;
    std::uint32_t rawPeer = 0;
};

}  // namespace

TEST(SeveralMessagesOfAPacket, StandBehindEachOtherWithLengthAndZero) {
    SeveralMessages messages(kUnlimited);
    EXPECT_TRUE(messages.empty());
    ASSERT_TRUE(add(messages, "first") && add(messages, "") && add(messages, "third"));
    EXPECT_EQ(packetOf(messages), std::string("DTVM\0\0\0\5first\0\0\0\0\0\0\0\0\0\5third\0", 29));
    EXPECT_THAT(read(bytesOf(packetOf(messages).substr(4))), ElementsAre("first", "", "third"));
    messages.clear();
    EXPECT_TRUE(messages.empty());
}

TEST(SeveralMessagesOfAPacket, AreTheMessageItselfWhenThereIsOne) {
    SeveralMessages messages(kUnlimited);
    ASSERT_TRUE(add(messages, "alone"));
    EXPECT_EQ(packetOf(messages), "alone");
}

TEST(SeveralMessagesOfAPacket, FitThePacketOfTheSocket) {
    SeveralMessages messages(4 + 2 * (4 + 10 + 1));
    EXPECT_FALSE(add(messages, std::string(27, 'x')));
    EXPECT_TRUE(messages.empty());
    EXPECT_TRUE(add(messages, std::string(10, 'x')));
    EXPECT_FALSE(add(messages, std::string(11, 'x')));
    EXPECT_TRUE(add(messages, std::string(10, 'x')));
    EXPECT_FALSE(add(messages, ""));
    EXPECT_FALSE(SeveralMessages(kUnlimited).add(nullptr, SeveralMessages::kMostBytes - 8));
}

TEST(SeveralMessagesOfAPacket, AreReadUpToOneThatIsNone) {
    const std::vector<std::uint8_t> good = {0, 0, 0, 1, 'a', 0};
    const auto with = [&good](std::vector<std::uint8_t> rest) {
        rest.insert(rest.begin(), good.begin(), good.end());
        return read(rest);
    };
    EXPECT_THAT(with({}), ElementsAre("a"));
    EXPECT_THAT(with({0, 0, 0}), ElementsAre("a", "3 bytes behind the last of several messages"));
    EXPECT_THAT(with({0, 0, 0, 0}), ElementsAre("a", "one of several messages names 0 bytes and a zero, 0 are left"));
    EXPECT_THAT(with({0, 0, 0, 2, 'b', 'c'}),
                ElementsAre("a", "one of several messages names 2 bytes and a zero, 2 are left"));
    EXPECT_THAT(with({0xFF, 0xFF, 0xFF, 0xFF, 'b', 0}),
                ElementsAre("a", "one of several messages names 4294967295 bytes and a zero, 2 are left"));
}

TEST_F(AServiceThatHolds, SendsOnePacketOfAllMessagesInOrder) {
    ASSERT_TRUE(held.begin());
    for (std::uint32_t number = 1; number <= 3; ++number) {
        EXPECT_EQ(service.send(number, "text " + std::to_string(number)), 0);
    }
    EXPECT_TRUE(raw->receivedNow().empty());
    held.end();
    ASSERT_TRUE(eventually([&] { return client.received().size() == 3; }));
    EXPECT_THAT(numbers(), ElementsAre(1, 2, 3));
    EXPECT_EQ(client.received()[1].text, "text 2");
    const std::string packet = raw->received();
    EXPECT_EQ(packet.substr(0, 4), "DTVM");
    EXPECT_EQ(read(bytesOf(packet.substr(4))).size(), 3U);
    EXPECT_TRUE(raw->receivedNow().empty());
}

TEST_F(AServiceThatHolds, SendsASingleMessageAsEver) {
    ASSERT_TRUE(held.begin());
    EXPECT_EQ(service.send(1, "hi", rawPeer), 0);
    held.end();
    const std::string packet = raw->received();
    EXPECT_EQ(service.send(1, "hi", rawPeer), 0);
    EXPECT_EQ(raw->received(), packet);
}

TEST_F(AServiceThatHolds, SendsWhatItHoldsBeforeTheMessageOfAnotherThread) {
    ASSERT_TRUE(held.begin());
    EXPECT_EQ(service.send(1), 0);
    std::async(std::launch::async, [&] { EXPECT_EQ(service.send(2), 0); }).wait();
    ASSERT_TRUE(eventually([&] { return client.received().size() == 2; }));
    EXPECT_EQ(service.send(3), 0);
    held.end();
    ASSERT_TRUE(eventually([&] { return client.received().size() == 3; }));
    EXPECT_THAT(numbers(), ElementsAre(1, 2, 3));
}

TEST_F(AServiceThatHolds, SendsManyAndLongMessagesInOrder) {
    constexpr std::uint32_t kCount = 300;
    ASSERT_TRUE(held.begin());
    for (std::uint32_t number = 0; number < kCount; ++number) {
        const std::size_t length = number % 50 == 7 ? 2 * SeveralMessages::kMostBytes : std::size_t{10} * number;
        EXPECT_EQ(service.send(number, std::string(length, 'x')), 0);
    }
    held.end();
    ASSERT_TRUE(eventually([&] { return client.received().size() == kCount; }));
    const std::vector<std::uint32_t> all = numbers();
    EXPECT_TRUE(std::is_sorted(all.begin(), all.end()));
    EXPECT_EQ(client.received()[7].text.size(), 2 * SeveralMessages::kMostBytes);
    EXPECT_EQ(client.received()[299].text.size(), 2990U);
}

TEST_F(AServiceThatHolds, IsOneThreadAtATime) {
    const auto begins = [&] { return std::async(std::launch::async, [&] { return held.begin(); }).get(); };
    ASSERT_TRUE(held.begin());
    EXPECT_FALSE(held.begin());
    EXPECT_FALSE(begins());
    held.end();
    EXPECT_TRUE(held.begin());
    held.end();
}

TEST_F(AServiceThatHolds, TellsTheOthersWhenAClientHasGone) {
    ASSERT_TRUE(held.begin());
    EXPECT_EQ(service.send(1), 0);
    raw.reset();
    ASSERT_TRUE(eventually([&] { return service.disconnected == 1; }));
    held.end();
    ASSERT_TRUE(eventually([&] { return client.received().size() == 1; }));
    EXPECT_LT(service.send(2, "", rawPeer), 0);
    EXPECT_EQ(service.send(3), 0);
    ASSERT_TRUE(eventually([&] { return client.received().size() == 2; }));
}

TEST_F(AServiceThatHolds, SendsEachClientItsOwn) {
    ASSERT_TRUE(held.begin());
    EXPECT_EQ(service.send(1, "to one", rawPeer), 0);
    EXPECT_EQ(service.send(2, "to the other", service.lastPeer), 0);
    EXPECT_LT(service.send(3, "to nobody", 4711), 0);
    held.end();
    EXPECT_NE(raw->received().find("to one"), std::string::npos);
    EXPECT_TRUE(raw->receivedNow().empty());
    ASSERT_TRUE(eventually([&] { return !client.received().empty(); }));
    EXPECT_EQ(client.received()[0].text, "to the other");
}

TEST_F(AServiceThatHolds, TakesNoSeveralMessagesItself) {
    std::vector<std::uint8_t> packet = {'D', 'T', 'V', 'M', 0, 0, 0, 43};
    const std::vector<std::uint8_t> good = goodPacket();
    packet.insert(packet.end(), good.begin(), good.end());
    packet.push_back(0);
    raw->send(packet);
    raw->send(good);
    ASSERT_TRUE(eventually([&] { return service.received().size() == 1; }));
    EXPECT_EQ(timesLogged("packet does not begin with the envelope's mark; dropped"), 1U);
}
