// Tests of what is told of inputs.
#include "input_watch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

#include "logged.h"

namespace {

using dtvservice::EventLoop;

class AWatchOfInputs : public testing::Test {
protected:
    AWatchOfInputs() {
        recording::reset();
        multiplex.report.setSource("udp://:5000");
        multiplex.report.opened(now);
    }
    void lookAfterASecond() { watch.look(now += std::chrono::seconds(1)); }
    void feed(std::uint8_t counter) {
        const std::array<std::uint8_t, broadcast::kPacketSize> packet{0x47, 0x00, 0x64,
                                                                      static_cast<std::uint8_t>(0x10U | counter)};
        multiplex.demux.feed(broadcast::TsPacket{packet.data()}, now);
    }
    void feedPat(unsigned int counter) {
        std::array<std::uint8_t, broadcast::kPacketSize> packet{};
        packet.fill(0xFF);
        const std::uint8_t begin[] = {0x47, 0x40, 0x00, 0x10, 0x00, 0x00, 0xB0, 0x0D, 0x00, 0x01, 0xC1,
                                      0x00, 0x00, 0x00, 0x01, 0xE0, 0x20, 0xA2, 0xC3, 0x29, 0x41};
        std::copy(std::begin(begin), std::end(begin), packet.begin());
        packet[3] = static_cast<std::uint8_t>(0x10U | (counter & 0x0FU));
        multiplex.demux.feed(broadcast::TsPacket{packet.data()}, now);
    }
    static testing::Matcher<recording::LogLine> warning(const std::string& function, const std::string& text) {
        return logged::tagged(blog::kUnsupported, "DtvService", "input_watch.cpp", function, text + "\n");
    }

    class : public broadcast::SiListener {
        void onChannelList(const broadcast::SiDatabase&) override {}
        void onPmt(const broadcast::SiDatabase&, std::uint16_t, const broadcast::Section&, bool) override {}
        void onEit(const broadcast::SiDatabase&, std::uint16_t, const broadcast::Section&, bool) override {}
        void onAit(const broadcast::SiDatabase&, std::uint16_t, const broadcast::Section&, bool) override {}
    } nobody;
    EventLoop loop;
    dtvservice::Multiplexes multiplexes;
    dtvservice::Multiplex& multiplex = multiplexes.add(nobody, nullptr);
    EventLoop::Clock::time_point now = EventLoop::Clock::now();
    std::vector<std::string> said;
    dtvservice::InputWatch watch{loop, multiplexes, [this](const std::string& line) { said.push_back(line); }};
};

}  // namespace

TEST_F(AWatchOfInputs, TellsOnceThatAnInputIsSilent) {
    for (int second = 0; second < 5; ++second) {
        lookAfterASecond();
    }
    EXPECT_THAT(logged::withoutTraces(),
                testing::ElementsAre(warning("tellState", "input 1, udp://:5000: silent for 2 s")));
}

TEST_F(AWatchOfInputs, CountsErrorsThatRepeat) {
    feed(0);
    for (int second = 0; second < 11; ++second) {
        feed(8);
        feed(0);
        lookAfterASecond();
    }
    std::vector<std::string> lines;
    for (const recording::LogLine& line : logged::withoutTraces()) {
        lines.push_back(line.function + ": " + line.message);
    }
    EXPECT_THAT(lines, testing::ElementsAre("tellState: input 1, udp://:5000: playing\n",
                                            "tellErrors: input 1: continuity errors: 2 so far\n",
                                            "tellState: input 1, udp://:5000: no PAT after 2 s\n",
                                            "tellErrors: input 1: continuity errors: 22 so far (repeated 20 times)\n"));
}

TEST_F(AWatchOfInputs, CountsThePausesOfAnInputThatComesAndGoes) {
    for (unsigned int round = 0; round < 10; ++round) {
        feedPat(round);
        for (int second = 0; second < 3; ++second) {
            lookAfterASecond();
        }
    }
    std::vector<std::string> lines;
    for (const recording::LogLine& line : logged::withoutTraces()) {
        lines.push_back(line.message);
    }
    const std::string input = "input 1, udp://:5000: ";
    EXPECT_THAT(lines, testing::ElementsAre(input + "playing\n", input + "silent for 2 s\n",
                                            input + "playing (repeated 4 times)\n",
                                            input + "silent for 2 s (repeated 4 times)\n"));
}
