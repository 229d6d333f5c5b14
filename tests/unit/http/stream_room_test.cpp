// Tests of the stream's readers on a running set.
#include "stream_room.h"

#include <nlohmann/json.hpp>

#include "running_set.h"

namespace {

using dtvservice::PacketQueue;

class AStreamOfTheSet : public ARunningSet {
protected:
    AStreamOfTheSet() {
        auto made = std::make_unique<dtvservice::StreamRoom>(core);
        room = made.get();
        core.add(std::move(made));
        room->multiplexReceived(core.received());
    }
    std::shared_ptr<PacketQueue> join() {
        auto queue = std::make_shared<PacketQueue>();
        room->join(queue);
        return queue;
    }
    /// What has come for the reader, as a receiver sees it.
    static std::string drain(PacketQueue& queue) {
        std::string all;
        std::string bytes(std::size_t{1} << 20U, '\0');
        while (const std::size_t count = queue.take(bytes.data(), bytes.size(), std::chrono::milliseconds(1))) {
            all.append(bytes, 0, count);
        }
        return all;
    }
    static std::set<unsigned int> pidsOf(const std::string& packets) {
        std::set<unsigned int> pids;
        for (std::size_t at = 0; at < packets.size(); at += broadcast::kPacketSize) {
            pids.insert(broadcast::TsPacket{reinterpret_cast<const std::uint8_t*>(packets.data()) + at}.pid());
        }
        return pids;
    }
    nlohmann::json status() const { return nlohmann::json::parse(core.requests.answer(R"({"command":"status"})")); }

    dtvservice::StreamRoom* room = nullptr;
};

}  // namespace

TEST_F(AStreamOfTheSet, IsThePresentedService) {
    const auto reader = join();
    play(sample);
    play(sample);
    const std::string packets = drain(*reader);
    ASSERT_FALSE(packets.empty());
    EXPECT_EQ(broadcast::TsPacket{reinterpret_cast<const std::uint8_t*>(packets.data())}.pid(), 0);
    EXPECT_EQ(pidsOf(packets).count(256), 1U) << "its PMT";
    EXPECT_EQ(pidsOf(packets).count(257), 1U) << "its video";
    EXPECT_EQ(pidsOf(packets).count(513), 0U) << "another service's video";
    EXPECT_EQ(status()["stream_readers"], 1);
}

TEST_F(AStreamOfTheSet, FollowsATune) {
    play(sample);
    const auto reader = join();
    tune(1, 28107);
    play(sample);
    const std::set<unsigned int> pids = pidsOf(drain(*reader));
    EXPECT_EQ(pids.count(513), 1U);
    EXPECT_EQ(pids.count(257), 0U);
}

TEST_F(AStreamOfTheSet, FollowsATuneToAnotherInput) {
    play(sample);
    const auto reader = join();
    tsmake::Multiplex other = sample;
    other.transportStreamId = 2000;
    broadcast::Demux& second = core.addMultiplex().demux;
    const auto playOther = [&] {
        tsmake::writeMultiplex(other, 2, [&](const std::uint8_t* packet) { second.feed(broadcast::TsPacket{packet}); });
    };
    playOther();
    EXPECT_TRUE(drain(*reader).empty()) << "it is not received";
    core.requests.answer(R"({"command":"tune","onid":1,"tsid":2000,"sid":28106})");
    play(sample);
    EXPECT_TRUE(drain(*reader).empty());
    playOther();
    EXPECT_EQ(pidsOf(drain(*reader)).count(257), 1U);
}

TEST_F(AStreamOfTheSet, CountsWhatASlowReaderLosesWhileAnotherGetsAll) {
    play(sample);
    const auto slow = join();
    const auto other = join();
    std::size_t got = 0;
    while (status()["stream_drops"] == 0) {
        play(sample);
        got += drain(*other).size();
    }
    EXPECT_GT(got, PacketQueue::kMost);
    EXPECT_EQ(drain(*slow).size(), PacketQueue::kMost / broadcast::kPacketSize * broadcast::kPacketSize);
    EXPECT_THAT(logged::withoutTraces(),
                testing::Contains(testing::Field(&recording::LogLine::message,
                                                 testing::HasSubstr("a reader of the stream is too slow: "))));
    play(sample);
    EXPECT_FALSE(drain(*slow).empty()) << "it goes on";
}

TEST_F(AStreamOfTheSet, ForgetsReadersThatHaveGone) {
    play(sample);
    const auto reader = join();
    reader->end();
    EXPECT_EQ(status()["stream_readers"], 0);
    play(sample);
    loop.runUntil(dtvservice::EventLoop::Clock::now());
    EXPECT_EQ(reader.use_count(), 1);
    const auto next = join();
    play(sample);
    EXPECT_FALSE(drain(*next).empty());
}
