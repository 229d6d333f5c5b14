// Tests of the packets that wait for a reader.
#include "packet_queue.h"

#include <gmock/gmock.h>

#include <thread>

#include "ts_packet.h"

namespace {

using dtvservice::PacketQueue;
using Put = PacketQueue::Put;
constexpr std::chrono::milliseconds kLong{20000};

std::string packet(char content) {
    return std::string(broadcast::kPacketSize, content);
}

class APacketQueue : public testing::Test {
protected:
    Put put(char content) { return queue.put(reinterpret_cast<const std::uint8_t*>(packet(content).data())); }
    std::string take(std::size_t most = std::size_t{1} << 20U, std::chrono::milliseconds longest = kLong) {
        std::string bytes(most, '\0');
        bytes.resize(queue.take(bytes.data(), most, longest));
        return bytes;
    }

    PacketQueue queue;
};

}  // namespace

TEST_F(APacketQueue, GivesPacketsInTheirOrder) {
    EXPECT_EQ(put('a'), Put::taken);
    EXPECT_EQ(put('b'), Put::taken);
    EXPECT_EQ(take(), packet('a') + packet('b'));
    put('c');
    EXPECT_EQ(take(), packet('c'));
}

TEST_F(APacketQueue, GivesNoMoreThanIsAskedFor) {
    put('a');
    put('b');
    EXPECT_EQ(take(100), std::string(100, 'a'));
    put('c');
    EXPECT_EQ(take(), std::string(88, 'a') + packet('b'));
    EXPECT_EQ(take(), packet('c'));
}

TEST_F(APacketQueue, GivesNothingIfNothingComes) {
    EXPECT_EQ(take(100, std::chrono::milliseconds(1)), "");
}

TEST_F(APacketQueue, DropsWhatHasNoRoomAndGoesOn) {
    std::size_t count = 0;
    while (put('a') == Put::taken) {
        ++count;
    }
    EXPECT_EQ(count, PacketQueue::kMost / broadcast::kPacketSize);
    EXPECT_EQ(put('b'), Put::dropped);
    take(1);
    EXPECT_EQ(put('c'), Put::taken);
    std::string rest;
    while (rest.find('c') == std::string::npos) {
        rest += take();
    }
    EXPECT_EQ(rest, std::string(count * broadcast::kPacketSize - 1, 'a') + packet('c'));
}

TEST_F(APacketQueue, WakesItsReader) {
    std::string taken;
    std::thread reader([&] { taken = take(); });
    put('a');
    reader.join();
    EXPECT_EQ(taken, packet('a'));
}

TEST_F(APacketQueue, EndsForBoth) {
    std::thread reader([&] { EXPECT_EQ(take(), ""); });
    queue.end();
    reader.join();
    EXPECT_TRUE(queue.isEnded());
    EXPECT_EQ(put('a'), Put::ended);
}
