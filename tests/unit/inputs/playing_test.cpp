// Tests of reading packets from files, of the time at which each packet is due, and of the generator.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include <cstdio>

#include "pacer.h"
#include "packet_file.h"
#include "packets.h"
#include "scheduler.h"

namespace {

constexpr std::uint64_t kMillisecond = 27000;  // of the PCR, which counts at 27 MHz

/// A temporary file.
class AFile : public testing::Test {
protected:
    AFile() {
        const int descriptor = mkstemp(path);
        file = fdopen(descriptor, "wb");
    }
    ~AFile() override { std::remove(path); }
    void write(const Bytes& bytes) { std::fwrite(bytes.data(), 1, bytes.size(), file); }
    void writePackets(std::uint16_t pid, int count) {
        PacketMaker maker(pid);
        for (int index = 0; index < count; ++index) {
            const Packet packet = maker.packet({}, false);
            write({packet.begin(), packet.end()});
        }
    }
    std::unique_ptr<dtvservice::PacketFile> open() {
        std::fclose(file);
        return dtvservice::PacketFile::open(path, error);
    }
    /// Expects this number of packets of PID 100, in order and without others between them.
    void expectPackets(int expected) {
        const auto packets = open();
        ASSERT_TRUE(packets) << error;
        int number = 0;
        while (const std::uint8_t* const packet = packets->next()) {
            EXPECT_EQ((broadcast::TsPacket{packet}.pid()), 100) << number;
            EXPECT_EQ((broadcast::TsPacket{packet}.continuityCounter()), number % 16) << number;
            ++number;
        }
        EXPECT_EQ(number, expected);
        EXPECT_EQ(packets->skippedBytes(), 0U);
    }
    static int count(dtvservice::PacketFile& packets) {
        int number = 0;
        while (packets.next() != nullptr) {
            ++number;
        }
        return number;
    }

    char path[32] = "/tmp/packets-test-XXXXXX";
    std::FILE* file = nullptr;
    std::string error;
};

using Clock = dtvservice::Pacer::Clock;

Packet withPcr(std::uint16_t pid, std::uint64_t pcr) {
    Packet packet = PacketMaker(pid).packet({}, false);
    packet[3] = 0x30;
    packet[4] = 7;
    packet[5] = 0x10;
    const std::uint64_t field = (pcr / 300) << 15U | 0x7E00U | pcr % 300;
    for (unsigned int index = 0; index < 6; ++index) {
        packet[6 + index] = static_cast<std::uint8_t>(field >> (40U - 8U * index));
    }
    return packet;
}

}  // namespace

TEST_F(AFile, GivesItsPacketsAgainAfterItWasRewound) {
    writePackets(100, 3000);
    const auto packets = open();
    ASSERT_TRUE(packets) << error;
    EXPECT_EQ(count(*packets), 3000);
    packets->rewind();
    EXPECT_EQ(count(*packets), 3000);
    EXPECT_EQ(packets->skippedBytes(), 0U);
}

TEST_F(AFile, FindsTheFirstPacketBehindOtherBytes) {
    write(Bytes(77, 0x47));
    writePackets(100, 10);
    const auto packets = open();
    ASSERT_TRUE(packets) << error;
    EXPECT_EQ(count(*packets), 10);
    EXPECT_EQ(packets->skippedBytes(), 77U);
}

TEST_F(AFile, FindsItsStepAgainAfterLostBytes) {
    writePackets(100, 10);
    write(Bytes(50, 0x00));
    writePackets(100, 10);
    const auto packets = open();
    ASSERT_TRUE(packets) << error;
    EXPECT_EQ(count(*packets), 20);
    EXPECT_EQ(packets->skippedBytes(), 50U);
}

TEST_F(AFile, LeavesAnIncompletePacketAtItsEnd) {
    writePackets(100, 5);
    write(Bytes(100, 0x47));
    const auto packets = open();
    ASSERT_TRUE(packets) << error;
    EXPECT_EQ(count(*packets), 5);
    EXPECT_EQ(packets->skippedBytes(), 100U);
}

TEST_F(AFile, WithOnePacketIsARowOfOne) {
    writePackets(100, 1);
    const auto packets = open();
    ASSERT_TRUE(packets) << error;
    EXPECT_EQ(count(*packets), 1);
}

TEST_F(AFile, MayHaveATimeStampInFrontOfEachPacket) {
    PacketMaker maker(100);
    for (int index = 0; index < 20; ++index) {
        write({static_cast<std::uint8_t>(0x47 + index), 0x00, 0x33, 0x00});  // the first begins like a sync byte
        const Packet packet = maker.packet({0x47, 0x47}, false);
        write({packet.begin(), packet.end()});
    }
    expectPackets(20);
}

TEST_F(AFile, MayHaveCheckBytesBehindEachPacket) {
    PacketMaker maker(100);
    for (int index = 0; index < 20; ++index) {
        const Packet packet = maker.packet({}, false);
        write({packet.begin(), packet.end()});
        write(Bytes(16, 0x47));
    }
    expectPackets(20);
}

TEST_F(AFile, MayBeCompressed) {
    gzFile const compressed = gzdopen(dup(fileno(file)), "wb");
    PacketMaker maker(100);
    for (int index = 0; index < 500; ++index) {
        const Packet packet =
            maker.packet({static_cast<std::uint8_t>(index), static_cast<std::uint8_t>(index / 7)}, false);
        gzwrite(compressed, packet.data(), static_cast<unsigned int>(packet.size()));
    }
    gzclose(compressed);
    const auto packets = open();
    ASSERT_TRUE(packets) << error;
    EXPECT_EQ(count(*packets), 500);
    packets->rewind();
    EXPECT_EQ(count(*packets), 500);
    EXPECT_EQ(packets->error(), "");
    ASSERT_EQ(truncate(path, 300), 0);
    const auto cut = dtvservice::PacketFile::open(path, error);
    ASSERT_TRUE(cut) << error;
    EXPECT_LT(count(*cut), 500);
    EXPECT_EQ(cut->error(), "cannot read " + std::string(path) + ": unexpected end of file");
}

TEST_F(AFile, ThatIsEmptyIsSaidToBe) {
    EXPECT_FALSE(open());
    EXPECT_EQ(error, std::string(path) + " is empty");
}

TEST_F(AFile, WithoutPacketsIsSaidToHaveNone) {
    write(Bytes(1000, 0x12));
    EXPECT_FALSE(open());
    EXPECT_EQ(error, std::string(path) + ": no transport stream packets found in 1000 bytes");
}

TEST_F(AFile, WithoutPacketsIsNotReadToItsEnd) {
    const Bytes megabyte(1U << 20U, 0x12);
    for (int count = 0; count < 3; ++count) {
        write(megabyte);
    }
    writePackets(100, 10);
    EXPECT_FALSE(open());
    EXPECT_EQ(error, std::string(path) + ": no transport stream packets found in 1048576 bytes");
}

TEST_F(AFile, WithoutPacketsIsNotDecompressedToItsEnd) {
    gzFile const compressed = gzdopen(dup(fileno(file)), "wb");
    const Bytes megabyte(1U << 20U, 0x00);
    for (int count = 0; count < 3; ++count) {
        gzwrite(compressed, megabyte.data(), static_cast<unsigned int>(megabyte.size()));
    }
    gzclose(compressed);
    EXPECT_FALSE(open());
    EXPECT_EQ(error, std::string(path) + ": no transport stream packets found in 1048576 bytes");
}

TEST_F(AFile, MayBeginWithAlmostAMegabyteOfOtherBytes) {
    write(Bytes((1U << 20U) - 1, 0x12));
    writePackets(100, 10);
    const auto packets = open();
    ASSERT_TRUE(packets) << error;
    EXPECT_EQ(count(*packets), 10);
    EXPECT_EQ(packets->skippedBytes(), (1U << 20U) - 1);
}

TEST_F(AFile, ThatIsAPipeIsRefusedWithoutWaitingForAWriter) {
    std::fclose(file);
    std::remove(path);
    ASSERT_EQ(mkfifo(path, 0600), 0);
    EXPECT_FALSE(dtvservice::PacketFile::open(path, error));
    EXPECT_EQ(error,
              std::string(path) + " is no regular file; what comes by a pipe is played from standard input, \"-\"");
    EXPECT_FALSE(dtvservice::PacketFile::open("/dev/zero", error));
    EXPECT_EQ(error, "/dev/zero is no regular file; what comes by a pipe is played from standard input, \"-\"");
}

TEST_F(AFile, ThatIsNotThereIsNamedWithTheReason) {
    std::fclose(file);
    EXPECT_FALSE(dtvservice::PacketFile::open("/nonexistent/file.ts", error));
    EXPECT_EQ(error, "cannot open /nonexistent/file.ts: No such file or directory");
    EXPECT_FALSE(dtvservice::PacketFile::open("/tmp", error));
    EXPECT_EQ(error, "/tmp is a directory");
}

TEST(APacer, IsDueByThePcr) {
    dtvservice::Pacer pacer;
    const Clock::time_point begin{};
    const auto due = [&](const Packet& packet) { return pacer.due(broadcast::TsPacket{packet.data()}, begin); };
    const Clock::time_point first = due(withPcr(100, 1000));
    EXPECT_EQ(due(withPcr(100, 1000 + kMillisecond * 40)) - first, std::chrono::milliseconds(40));
    EXPECT_EQ(due(withPcr(200, 5)) - first, std::chrono::milliseconds(40));
    EXPECT_EQ(due(PacketMaker(300).packet({}, false)) - first, std::chrono::milliseconds(40));
    EXPECT_EQ(due(withPcr(100, 1000 + kMillisecond * 100)) - first, std::chrono::milliseconds(100));
}

TEST(APacer, GoesOnWhereThePcrStartsOver) {
    dtvservice::Pacer pacer;
    const Clock::time_point begin{};
    const Packet before = withPcr(100, broadcast::kPcrWrap - kMillisecond * 10);
    const Packet after = withPcr(100, kMillisecond * 30);
    const Clock::time_point first = pacer.due(broadcast::TsPacket{before.data()}, begin);
    EXPECT_EQ(pacer.due(broadcast::TsPacket{after.data()}, begin) - first, std::chrono::milliseconds(40));
}

TEST(APacer, BeginsANewTimeBaseWhereThePcrJumps) {
    const Clock::time_point begin{};
    const Clock::time_point later = begin + std::chrono::seconds(7);
    for (const std::uint64_t jump : {std::uint64_t{27000000} * 100, std::uint64_t{5}}) {
        dtvservice::Pacer pacer;
        const Packet first = withPcr(100, 27000000);
        const Packet jumped = withPcr(100, jump);
        pacer.due(broadcast::TsPacket{first.data()}, begin);
        EXPECT_EQ(pacer.due(broadcast::TsPacket{jumped.data()}, later), later);
    }
}

namespace {

/// Plays PCRs of one PID with 100 packets for each, and waits for each packet. Returns how long that takes.
std::chrono::milliseconds timeToPlay(const std::vector<std::uint64_t>& pcrs) {
    dtvservice::Pacer pacer;
    const Clock::time_point begin{};
    Clock::time_point now = begin;
    const Packet other = PacketMaker(300).packet({}, false);
    for (const std::uint64_t pcr : pcrs) {
        const Packet packet = withPcr(100, pcr);
        now = pacer.due(broadcast::TsPacket{packet.data()}, now);
        for (int count = 1; count < 100; ++count) {
            now = pacer.due(broadcast::TsPacket{other.data()}, now);
        }
    }
    return std::chrono::duration_cast<std::chrono::milliseconds>(now - begin);
}

constexpr double kSlack = 120;  // milliseconds: three distances of PCRs, until the rate is known

}  // namespace

TEST(APacer, PlaysTimeBasesThatAlternateAtTheirPace) {
    constexpr double kUntilToldApart = 1100;
    for (const std::uint64_t distance : {500 * kMillisecond, 60000 * kMillisecond}) {
        std::vector<std::uint64_t> pcrs;
        for (std::uint64_t time = 0; time < 4000 * kMillisecond; time += 40 * kMillisecond) {
            pcrs.push_back(time);
            pcrs.push_back(distance + time + 20 * kMillisecond);
        }
        EXPECT_NEAR(static_cast<double>(timeToPlay(pcrs).count()), 4000, kUntilToldApart) << distance;
    }
}

TEST(APacer, PlaysSplicedPiecesAtTheirPace) {
    std::vector<std::uint64_t> pcrs;
    for (std::uint64_t piece = 0; piece < 20; ++piece) {
        for (std::uint64_t time = 0; time < 200 * kMillisecond; time += 40 * kMillisecond) {
            pcrs.push_back(piece % 2 * 60000 * kMillisecond + piece / 2 * 200 * kMillisecond + time);
        }
    }
    EXPECT_NEAR(static_cast<double>(timeToPlay(pcrs).count()), 4000, kSlack) << "both clocks stand still between";
}

TEST(APacer, PlaysOverADamagedPcr) {
    std::vector<std::uint64_t> pcrs;
    for (std::uint64_t time = 0; time < 4000 * kMillisecond; time += 40 * kMillisecond) {
        pcrs.push_back(time % (400 * kMillisecond) == 0 ? 0x155555555 + time * 1000 : time);
    }
    EXPECT_NEAR(static_cast<double>(timeToPlay(pcrs).count()), 4000, kSlack);
}

TEST(APacer, LosesNoMoreThanTwoSecondsByADamagedPcrRightBehindAGoodOne) {
    dtvservice::Pacer pacer;
    const Clock::time_point begin{};
    Clock::time_point now = begin;
    const Packet other = PacketMaker(300).packet({}, false);
    for (std::uint64_t time = 0; time < 2000 * kMillisecond; time += 40 * kMillisecond) {
        const Packet good = withPcr(100, time);
        now = pacer.due(broadcast::TsPacket{good.data()}, now);
        if (time == 1000 * kMillisecond) {
            const Packet damaged = withPcr(100, time + 900 * kMillisecond);
            now = pacer.due(broadcast::TsPacket{damaged.data()}, now);
        }
        for (int count = 1; count < 100; ++count) {
            now = pacer.due(broadcast::TsPacket{other.data()}, now);
        }
    }
    EXPECT_LE(now - begin, std::chrono::seconds(4));
}

TEST(APacer, UsesTheGivenRateWithoutPcr) {
    constexpr std::uint64_t kBitRate = 1504000;  // 1000 packets a second
    dtvservice::Pacer pacer(kBitRate);
    const Packet packet = PacketMaker(100).packet({}, false);
    const Clock::time_point begin{};
    const Clock::time_point first = pacer.due(broadcast::TsPacket{packet.data()}, begin);
    EXPECT_EQ(pacer.due(broadcast::TsPacket{packet.data()}, begin) - first, std::chrono::milliseconds(1));
}

TEST(APacer, FollowsTheNextPidWhenPcrsEnd) {
    dtvservice::Pacer pacer;
    const Clock::time_point begin{};
    const auto due = [&](const Packet& packet) { return pacer.due(broadcast::TsPacket{packet.data()}, begin); };
    due(withPcr(100, 5));  // the last PCR of PID 100
    const Packet other = PacketMaker(300).packet({}, false);
    std::uint64_t pcr = 27000000;
    std::vector<Clock::time_point> times;
    // 25 rounds of 100 packets a second: PCRs 40 ms apart in a stream of about 3.8 Mbit/s.
    for (int count = 0; count < 50; ++count) {
        times.push_back(due(withPcr(200, pcr)));
        pcr += kMillisecond * 40;
        for (int packet = 0; packet < 100; ++packet) {
            due(other);
        }
    }
    EXPECT_EQ(times[1] - times[0], std::chrono::milliseconds(0)) << "PID 100 may go on";
    for (std::size_t index = 40; index < times.size(); ++index) {
        EXPECT_EQ(times[index] - times[index - 1], std::chrono::milliseconds(40)) << index;
    }
}

TEST(APacer, KeepsAPidWithPcrsWithinASecond) {
    dtvservice::Pacer pacer;
    const Clock::time_point begin{};
    const auto due = [&](const Packet& packet) { return pacer.due(broadcast::TsPacket{packet.data()}, begin); };
    // PCRs 100 ms apart with 5000 packets between them: 75 Mbit/s. Between them there are PCRs of another PID.
    const Packet other = PacketMaker(300).packet({}, false);
    const Packet elsewhere = withPcr(200, 1);
    std::vector<Clock::time_point> times;
    for (std::uint64_t count = 0; count < 10; ++count) {
        times.push_back(due(withPcr(100, count * 2700000)));
        for (int packet = 0; packet < 5000; ++packet) {
            due(count > 1 && packet == 4990 ? elsewhere : other);
        }
    }
    for (std::size_t index = 3; index < times.size(); ++index) {
        EXPECT_EQ(times[index] - times[index - 1], std::chrono::milliseconds(100)) << index;
    }
}

TEST(APacer, UsesTheDefaultRateWithoutPcr) {
    dtvservice::Pacer pacer;
    const Packet packet = PacketMaker(100).packet({}, false);
    const Clock::time_point begin{};
    const Clock::time_point first = pacer.due(broadcast::TsPacket{packet.data()}, begin);
    Clock::time_point last = first;
    constexpr int kPackets = 3324;  // a second of 5 Mbit/s
    for (int count = 0; count < kPackets; ++count) {
        last = pacer.due(broadcast::TsPacket{packet.data()}, begin);
    }
    EXPECT_NEAR(std::chrono::duration<double>(last - first).count(), 1.0, 0.001);
}

TEST(TheGenerator, WritesTheSameBytesEveryTime) {
    const auto bytes = [] {
        Bytes all;
        tsmake::writeMultiplex(tsmake::sampleMultiplex(), 1, [&all](const std::uint8_t* packet) {
            all.insert(all.end(), packet, packet + broadcast::kPacketSize);
        });
        return all;
    };
    EXPECT_EQ(bytes(), bytes());
}

TEST(TheGenerator, CountsContinuouslyWithFrequentPcrs) {
    std::array<int, broadcast::kPidCount> counters;
    counters.fill(-1);
    std::map<std::uint16_t, std::uint64_t> lastPcr;
    std::uint64_t slot = 0;
    constexpr std::uint64_t kTicksPerPacket = 27000;
    tsmake::writeMultiplex(tsmake::sampleMultiplex(), 4, [&](const std::uint8_t* bytes) {
        const broadcast::TsPacket packet{bytes};
        int& counter = counters[packet.pid()];
        if (packet.pid() != broadcast::kNullPid) {
            EXPECT_TRUE(counter < 0 || packet.continuityCounter() == (counter + 1) % 16) << packet.pid();
            counter = packet.continuityCounter();
        }
        if (packet.hasPcr()) {
            EXPECT_EQ(packet.pcr(), slot * kTicksPerPacket) << "the PCR is the time of its own place";
            const auto last = lastPcr.find(packet.pid());
            EXPECT_TRUE(last == lastPcr.end() || packet.pcr() - last->second <= kMillisecond * 40) << packet.pid();
            lastPcr[packet.pid()] = packet.pcr();
        }
        ++slot;
    });
    EXPECT_EQ(lastPcr.size(), 4U);
}
