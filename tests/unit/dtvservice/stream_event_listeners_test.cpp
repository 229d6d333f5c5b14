// Tests of finding the names of stream events in broadcast carousels.
#include "stream_event_listeners.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "carousel.h"
#include "packets.h"
#include "recording/recording_platform.h"

namespace {

using dtvservice::StreamEventListeners;

constexpr std::uint16_t kFirstPid = 100;
constexpr std::uint16_t kCarousels = 24;

/// The maximum number of events of an object, at the maximum depth of directories.
tsmake::StreamEvents manyEvents() {
    constexpr std::uint16_t kEvents = 255;
    constexpr std::size_t kDirectories = 15;
    tsmake::StreamEvents events;
    for (std::uint16_t id = 0; id < kEvents; ++id) {
        events.events.push_back({id, "event" + std::to_string(id), "", 0});
    }
    for (std::size_t depth = 0; depth < kDirectories; ++depth) {
        events.object += std::string(250, 'd') + "/";
    }
    events.object += "object";
    return events;
}

}  // namespace

TEST(AnEventsName, CausesOneWarningAboveTheLimit) {
    recording::reset();
    dtvservice::EventLoop loop;
    broadcast::Demux demux;
    StreamEventListeners listeners(loop, [](auto, const auto&, const auto&) {});
    broadcast::Channel channel;
    channel.originalNetworkId = 1;
    channel.transportStreamId = 2;
    channel.serviceId = 3;
    si::Pmt pmt;
    pmt.serviceId = 3;
    for (std::uint16_t index = 0; index < kCarousels; ++index) {
        pmt.streams.push_back({0x0B, static_cast<std::uint16_t>(kFirstPid + index), {}});
    }
    listeners.follow(demux, channel, pmt);
    std::vector<StreamEventListeners::Result> answers;
    listeners.add(1, {1, 2, 3, -1, "", "nobody"}, [&answers](auto result) { answers.push_back(result); });
    const std::vector<tsmake::Section> sections = tsmake::carouselSections(manyEvents());
    for (const si::Pmt::Stream& stream : pmt.streams) {
        PacketMaker maker(stream.pid);
        for (int round = 0; round < 2; ++round) {
            for (const Packet& packet : maker.packets({sections.begin(), sections.end()})) {
                demux.feed(broadcast::TsPacket{packet.data()});
            }
        }
    }
    std::vector<std::string> lines;
    for (const recording::LogLine& line : recording::log()) {
        lines.push_back(line.message);
    }
    EXPECT_THAT(lines, testing::ElementsAre(testing::HasSubstr(
                           "the carousels of service 1:2:3 have more directories and stream events than are kept; the "
                           "others are passed over")));
    EXPECT_THAT(answers, testing::ElementsAre(StreamEventListeners::Result::unknownName));
}
