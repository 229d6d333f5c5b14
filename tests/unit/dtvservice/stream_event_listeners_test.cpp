// Tests of finding the names of stream events in broadcast carousels.
#include "stream_event_listeners.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "carousel.h"
#include "logged.h"
#include "packets.h"

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

broadcast::Channel presentedChannel() {
    broadcast::Channel channel;
    channel.originalNetworkId = 1;
    channel.transportStreamId = 2;
    channel.serviceId = 3;
    return channel;
}

/// Listeners of the presented service 1:2:3, whose only carousel is silent.
class StreamEvents : public testing::Test {
protected:
    StreamEvents() {
        si::Pmt pmt;
        pmt.serviceId = 3;
        pmt.streams.push_back({0x0B, kFirstPid, {{0x52, {kTag}}}});
        listeners.follow(demux, presentedChannel(), pmt);
    }
    void add(std::uint32_t browser, const std::string& name, const std::string& path = "") {
        listeners.add(browser, {1, 2, 3, kTag, path, name}, [this](auto result) { answers.push_back(result); });
    }

    static constexpr std::uint8_t kTag = 7;
    dtvservice::EventLoop loop;
    broadcast::Demux demux;
    StreamEventListeners listeners{loop, [](auto, const auto&, const auto&) {}};
    std::vector<StreamEventListeners::Result> answers;
};

}  // namespace

TEST_F(StreamEvents, HaveALimitedNumberOfListenersForEachBrowser) {
    using Result = StreamEventListeners::Result;
    for (std::size_t number = 0; number < StreamEventListeners::kMostListeners; ++number) {
        add(1, (number % 2 == 0 ? "" : "name") + std::to_string(number));
    }
    EXPECT_EQ(answers, std::vector<Result>(StreamEventListeners::kMostListeners / 2, Result::done))
        << "those that wait for a name have no answer yet";
    answers.clear();
    add(1, "4000");
    add(1, "another name");
    add(2, "4000");
    EXPECT_THAT(answers, testing::ElementsAre(Result::tooMany, Result::tooMany, Result::done));
    answers.clear();
    EXPECT_EQ(listeners.remove(1, {1, 2, 3, kTag, "", "0"}), Result::done);
    EXPECT_EQ(listeners.remove(1, {1, 2, 3, kTag, "", "name1"}), Result::noSuchListener);
    add(1, "4000");
    add(1, "4001");
    add(1, "4002");
    EXPECT_THAT(answers, testing::ElementsAre(Result::unknownName, Result::done, Result::done, Result::tooMany));
}

TEST_F(StreamEvents, HaveNamesOfLimitedLength) {
    using Result = StreamEventListeners::Result;
    add(1, "5", std::string(1023, 'p'));
    add(1, "5", std::string(1024, 'p'));
    add(1, std::string(1025, 'n'));
    EXPECT_THAT(answers, testing::ElementsAre(Result::done, Result::tooMany, Result::tooMany));
}

TEST(AnEventsName, CausesOneWarningAboveTheLimit) {
    recording::reset();
    dtvservice::EventLoop loop;
    broadcast::Demux demux;
    StreamEventListeners listeners(loop, [](auto, const auto&, const auto&) {});
    const broadcast::Channel channel = presentedChannel();
    si::Pmt pmt;
    pmt.serviceId = 3;
    for (std::uint16_t index = 0; index < kCarousels; ++index) {
        pmt.streams.push_back({0x0B, static_cast<std::uint16_t>(kFirstPid + index), {}});
    }
    listeners.follow(demux, channel, pmt);
    std::vector<StreamEventListeners::Result> answers;
    listeners.add(1, {1, 2, 3, -1, "", "nobody"}, [&answers](auto result) { answers.push_back(result); });
    const std::vector<tsmake::Section> sections = tsmake::carouselSections(manyEvents());
    constexpr int kMostRounds = 100;
    for (int round = 0; round < kMostRounds && answers.empty(); ++round) {
        for (const si::Pmt::Stream& stream : pmt.streams) {
            for (const Packet& packet : PacketMaker(stream.pid).packets({sections.begin(), sections.end()})) {
                demux.feed(broadcast::TsPacket{packet.data()});
            }
        }
    }
    EXPECT_THAT(logged::messages(),
                testing::ElementsAre(testing::HasSubstr(
                    "the carousels of service 1:2:3 have more directories and stream events than are kept; the "
                    "others are passed over")));
    EXPECT_THAT(answers, testing::ElementsAre(StreamEventListeners::Result::unknownName));
}
