// Which packets a fault takes or damages.
#include "packet_faults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace {

using dtvservice::PacketFaults;
using Packet = std::array<std::uint8_t, broadcast::kPacketSize>;

Packet packetOf(std::uint16_t pid) {
    Packet packet{};
    packet[0] = broadcast::kSyncByte;
    packet[1] = static_cast<std::uint8_t>(pid >> 8U);
    packet[2] = static_cast<std::uint8_t>(pid);
    packet[3] = 0x10;
    return packet;
}
const std::uint8_t* passed(PacketFaults& faults, const Packet& packet) {
    return faults.pass(broadcast::TsPacket{packet.data()});
}
PacketFaults::Fault lossOf(double percent, unsigned int seed = 1) {
    return {1, PacketFaults::Kind::withheld, std::nullopt, percent, std::mt19937(seed)};
}
/// Which of a thousand packets arrive.
std::vector<bool> arriving(const PacketFaults::Fault& fault) {
    PacketFaults faults;
    faults.add(fault);
    std::vector<bool> arrived;
    for (int count = 0; count < 1000; ++count) {
        arrived.push_back(passed(faults, packetOf(17)) != nullptr);
    }
    return arrived;
}
int bitsThatDiffer(const Packet& packet, const std::uint8_t* other) {
    int count = 0;
    for (std::size_t at = 0; at < packet.size(); ++at) {
        count += __builtin_popcount(static_cast<unsigned int>(packet[at] ^ other[at]));
    }
    return count;
}

}  // namespace

TEST(PacketFaultsOfAnInput, LoseAsManyPacketsAsTheySay) {
    const std::vector<bool> arrived = arriving(lossOf(20));
    EXPECT_EQ(std::count(arrived.begin(), arrived.end(), false), 214);
    EXPECT_THAT(arriving(lossOf(0)), testing::Each(true));
    EXPECT_THAT(arriving(lossOf(100)), testing::Each(false));
}

TEST(PacketFaultsOfAnInput, ChooseTheSamePacketsForTheSameSeed) {
    EXPECT_EQ(arriving(lossOf(50, 7)), arriving(lossOf(50, 7)));
    EXPECT_NE(arriving(lossOf(50, 7)), arriving(lossOf(50, 8)));
}

TEST(PacketFaultsOfAnInput, LeaveOtherPidsAlone) {
    PacketFaults faults;
    faults.add({1, PacketFaults::Kind::withheld, std::uint16_t{18}, 100, std::mt19937(1)});
    const Packet other = packetOf(17);
    EXPECT_EQ(passed(faults, packetOf(18)), nullptr);
    EXPECT_EQ(passed(faults, other), other.data());
}

TEST(PacketFaultsOfAnInput, DamageOneBitOfACopyBehindTheHeader) {
    PacketFaults faults;
    faults.add({1, PacketFaults::Kind::damaged, std::nullopt, 100, std::mt19937(1)});
    const Packet packet = packetOf(17);
    for (int count = 0; count < 100; ++count) {
        const std::uint8_t* const damaged = passed(faults, packet);
        ASSERT_NE(damaged, packet.data());
        EXPECT_EQ(bitsThatDiffer(packet, damaged), 1);
        EXPECT_TRUE(std::equal(packet.begin(), packet.begin() + 4, damaged));
    }
    EXPECT_EQ(packet, packetOf(17));
}

TEST(PacketFaultsOfAnInput, AreSeveralAtATime) {
    PacketFaults faults;
    faults.add({1, PacketFaults::Kind::damaged, std::nullopt, 100, std::mt19937(1)});
    faults.add({2, PacketFaults::Kind::damaged, std::nullopt, 100, std::mt19937(2)});
    EXPECT_EQ(bitsThatDiffer(packetOf(17), passed(faults, packetOf(17))), 2);
    faults.remove(1);
    EXPECT_EQ(bitsThatDiffer(packetOf(17), passed(faults, packetOf(17))), 1);
    faults.remove(2);
    EXPECT_TRUE(faults.empty());
}
