// Tests of playing a file into a demultiplexer, step by step.
#include "player.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <utility>

#include "logged.h"
#include "packets.h"

namespace {

/// Plays a temporary file.
class APlayback : public testing::Test {
protected:
    APlayback() : file(fdopen(mkstemp(path), "wb")) { recording::reset(); }
    ~APlayback() override { std::remove(path); }
    void write(const Bytes& bytes) { std::fwrite(bytes.data(), 1, bytes.size(), file); }
    void writePackets(int count) {
        PacketMaker maker(100);
        for (int index = 0; index < count; ++index) {
            const Packet packet = maker.packet({}, false);
            write({packet.begin(), packet.end()});
        }
    }

    std::unique_ptr<dtvservice::PacketFile> opened() {
        std::fclose(std::exchange(file, nullptr));
        std::string error;
        return dtvservice::PacketFile::open(path, error);
    }
    /// Plays until the condition holds, without waiting for the time of any step.
    template <typename Condition>
    static bool stepsUntil(dtvservice::Playback& playback, Condition condition) {
        constexpr int kMost = 1000;
        for (int step = 0; step < kMost && !condition(); ++step) {
            if (!playback.due()) {
                return false;
            }
            playback.feed();
        }
        return condition();
    }
    static std::vector<std::string> lines() {
        std::vector<std::string> texts;
        for (const recording::LogLine& line : logged::withoutTraces()) {
            texts.push_back(line.message);
        }
        return texts;
    }

    char path[32] = "/tmp/player-test-XXXXXX";
    std::FILE* file;
    broadcast::Demux demux;
    dtvservice::InputReport report;
};

}  // namespace

TEST_F(APlayback, LetsOthersPlayWhileItLooksForItsNextPacket) {
    writePackets(10);
    write(Bytes(std::size_t{8} << 20U, 0x00));
    writePackets(10);
    std::fclose(file);
    std::string error;
    dtvservice::Playback playback(path, dtvservice::PacketFile::open(path, error), demux, report,
                                  {dtvservice::Repeat::once});
    int stepsWithoutPacket = 0;
    while (playback.due()) {
        const std::uint64_t before = demux.packets();
        playback.feed();
        stepsWithoutPacket += demux.packets() == before ? 1 : 0;
    }
    EXPECT_EQ(demux.packets(), 20U);
    EXPECT_EQ(stepsWithoutPacket, 8) << "one a megabyte";
}

TEST_F(APlayback, RestartsOnlyAtItsEnd) {
    writePackets(10);
    write(Bytes(std::size_t{2} << 20U, 0x00));
    std::fclose(file);
    std::string error;
    dtvservice::Playback playback(path, dtvservice::PacketFile::open(path, error), demux, report, {});
    constexpr int kSteps = 12;  // ten packets, the first megabyte without packets, and after the second one the restart
    for (int step = 0; step < kSteps; ++step) {
        ASSERT_TRUE(playback.due());
        playback.feed();
    }
    EXPECT_EQ(demux.packets(), 10U);
    ASSERT_TRUE(playback.due());
    playback.feed();
    EXPECT_EQ(demux.packets(), 11U);
}

TEST_F(APlayback, PlaysTheFileThatHasTakenItsName) {
    writePackets(3);
    dtvservice::Playback playback(path, opened(), demux, report, {});
    ASSERT_TRUE(stepsUntil(playback, [this] { return demux.countsOf(100).packets == 2; }));
    const std::string later = std::string(path) + ".new";
    file = std::fopen(later.c_str(), "wb");
    PacketMaker maker(200);
    for (int count = 0; count < 5; ++count) {
        const Packet packet = maker.packet({}, false);
        write({packet.begin(), packet.end()});
    }
    std::fclose(file);
    ASSERT_EQ(std::rename(later.c_str(), path), 0);
    EXPECT_TRUE(stepsUntil(playback, [this] { return demux.countsOf(200).packets == 10; }));
    EXPECT_EQ(demux.countsOf(100).packets, 3U) << "to its end";
    EXPECT_THAT(lines(), testing::ElementsAre(std::string(path) + " has changed: the new file is played\n",
                                              std::string(path) + " has been opened\n"));
}

TEST_F(APlayback, SaysOnlyOnceInAWhileThatItsFileIsAnother) {
    writePackets(3);
    dtvservice::Playback playback(path, opened(), demux, report, {});
    const std::string later = std::string(path) + ".new";
    for (std::uint16_t pid = 200; pid < 205; ++pid) {
        file = std::fopen(later.c_str(), "wb");
        const Packet packet = PacketMaker(pid).packet({}, false);
        write({packet.begin(), packet.end()});
        std::fclose(file);
        ASSERT_EQ(std::rename(later.c_str(), path), 0);
        EXPECT_TRUE(stepsUntil(playback, [&] { return demux.countsOf(pid).packets != 0; })) << pid;
    }
    EXPECT_THAT(lines(), testing::ElementsAre(std::string(path) + " has changed: the new file is played\n",
                                              std::string(path) + " has been opened\n"));
}

TEST_F(APlayback, GoesOnWithAFileThatHasLostItsName) {
    writePackets(3);
    dtvservice::Playback playback(path, opened(), demux, report, {});
    std::remove(path);
    EXPECT_TRUE(stepsUntil(playback, [this] { return demux.packets() == 9; }));
    EXPECT_THAT(lines(), testing::IsEmpty());
}

TEST_F(APlayback, SaysThatItsFileHasBeenCutToNothing) {
    writePackets(3);
    dtvservice::Playback playback(path, opened(), demux, report, {});
    ASSERT_TRUE(stepsUntil(playback, [this] { return demux.packets() == 3; }));
    ASSERT_EQ(truncate(path, 0), 0);
    const std::string problem = std::string(path) + " is empty";
    EXPECT_TRUE(stepsUntil(playback, [&] { return report.reason() == problem; }));
    EXPECT_STREQ(report.stateName(), "failed");
    EXPECT_THAT(lines(), testing::Contains(problem + "; trying again every second\n"));
    file = std::fopen(path, "wb");
    writePackets(3);
    std::fclose(file);
    EXPECT_TRUE(stepsUntil(playback, [this] { return demux.packets() == 6; })) << "it has packets again";
}

TEST_F(APlayback, SaysThatItHasEnded) {
    writePackets(3);
    dtvservice::Playback playback(path, opened(), demux, report, {dtvservice::Repeat::once});
    EXPECT_FALSE(stepsUntil(playback, [] { return false; }));
    EXPECT_EQ(report.reason(), "ended");
}

TEST_F(APlayback, CountsTheBytesOutsidePacketsInEveryRound) {
    write(Bytes(77, 0x12));
    writePackets(3);
    dtvservice::Playback playback(path, opened(), demux, report, {});
    EXPECT_TRUE(stepsUntil(playback, [this] { return demux.packets() == 4; }));
    EXPECT_EQ(report.counts.skippedBytes, 154U);
}

TEST_F(APlayback, SaysOnlyOnceThatItCannotBeOpened) {
    std::fclose(file);
    report.failed(std::string(path) + " is empty");
    dtvservice::Playback playback(path, nullptr, demux, report, {});
    for (int attempt = 0; attempt < 5; ++attempt) {
        ASSERT_TRUE(playback.due());
        playback.feed();
    }
    EXPECT_THAT(lines(), testing::IsEmpty()) << "the program has told it";
}
