// Tests of playing a file into a demultiplexer, step by step.
#include "player.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>

#include "packets.h"

namespace {

/// Plays a temporary file.
class APlayback : public testing::Test {
protected:
    APlayback() : file(fdopen(mkstemp(path), "wb")) {}
    ~APlayback() override { std::remove(path); }
    void write(const Bytes& bytes) { std::fwrite(bytes.data(), 1, bytes.size(), file); }
    void writePackets(int count) {
        PacketMaker maker(100);
        for (int index = 0; index < count; ++index) {
            const Packet packet = maker.packet({}, false);
            write({packet.begin(), packet.end()});
        }
    }

    char path[32] = "/tmp/player-test-XXXXXX";
    std::FILE* file;
    broadcast::Demux demux;
};

}  // namespace

TEST_F(APlayback, LetsOthersPlayWhileItLooksForItsNextPacket) {
    writePackets(10);
    write(Bytes(std::size_t{8} << 20U, 0x00));
    writePackets(10);
    std::fclose(file);
    std::string error;
    dtvservice::Playback playback(path, dtvservice::PacketFile::open(path, error), demux, dtvservice::Repeat::once);
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
    dtvservice::Playback playback(path, dtvservice::PacketFile::open(path, error), demux, dtvservice::Repeat::forever);
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
