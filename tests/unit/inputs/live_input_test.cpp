// Tests of datagrams that arrive while the loop is busy.
#include "live_input.h"

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <fstream>
#include <sstream>

#include "eventually.h"
#include "logged.h"
#include "pacer.h"
#include "packets.h"
#include "recording/recording_platform.h"

namespace {

using dtvservice::EventLoop;
using dtvservice::LiveInput;

constexpr std::size_t kPacketsADatagram = 7;

class ABusyLoop : public testing::Test {
protected:
    ABusyLoop() : descriptor(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
        recording::reset();
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        const int probe = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        EXPECT_EQ(bind(probe, asGeneric(), sizeof address), 0);
        socklen_t size = sizeof address;
        getsockname(probe, reinterpret_cast<sockaddr*>(&address), &size);
        close(probe);
        std::string error;
        const auto name = dtvservice::parseInput("udp://127.0.0.1:" + std::to_string(ntohs(address.sin_port)), error);
        input = std::make_unique<LiveInput>(*name, loop, demux, report, dtvservice::Pacer::kDefaultBitRate);
        EXPECT_TRUE(waitingBytes().has_value()) << "it listens from the beginning";
    }
    ~ABusyLoop() override { close(descriptor); }

    /// Sends this number of packets, no faster than the input receives them.
    void send(std::size_t packets) {
        const Packet packet = PacketMaker(100).packet({}, false);
        Bytes datagram;
        for (std::size_t count = 0; count < kPacketsADatagram; ++count) {
            datagram.insert(datagram.end(), packet.begin(), packet.end());
        }
        for (std::size_t sent = 0; sent < packets; sent += kPacketsADatagram) {
            constexpr std::size_t kShortly = 20;
            if (sent / kPacketsADatagram % kShortly == 0) {
                ASSERT_TRUE(eventually([this] { return waitingBytes() == 0; }));
            }
            const std::size_t size = std::min(packets - sent, kPacketsADatagram) * packet.size();
            sendto(descriptor, datagram.data(), size, 0, asGeneric(), sizeof address);
        }
        ASSERT_TRUE(eventually([this] { return waitingBytes() == 0; }));
    }
    std::size_t linesOfLoss() const {
        std::size_t lines = 0;
        for (const recording::LogLine& line : recording::log()) {
            lines += line.message.find(" packets came faster than they were taken, so far") != std::string::npos;
        }
        return lines;
    }
    bool takes(std::size_t packets) {
        return eventually([&] {
            loop.runUntil(EventLoop::Clock::now());
            return demux.packets() >= packets;
        });
    }

    EventLoop loop;
    broadcast::Demux demux;
    dtvservice::InputReport report;
    std::unique_ptr<LiveInput> input;

private:
    const sockaddr* asGeneric() const { return reinterpret_cast<const sockaddr*>(&address); }
    /// The bytes that wait in the input's socket; nothing before the socket exists.
    std::optional<std::size_t> waitingBytes() const {
        char wanted[16];
        std::snprintf(wanted, sizeof wanted, ":%04X", ntohs(address.sin_port));
        std::ifstream file("/proc/net/udp");
        for (std::string line; std::getline(file, line);) {
            std::istringstream words(line);
            std::string slot, local, remote, state, queues;
            words >> slot >> local >> remote >> state >> queues;
            if (local.find(wanted) != std::string::npos && queues.find(':') != std::string::npos) {
                return std::stoul(queues.substr(queues.find(':') + 1), nullptr, 16);
            }
        }
        return std::nullopt;
    }

    int descriptor;
    sockaddr_in address{};
};

}  // namespace

TEST_F(ABusyLoop, FindsASecondOfDatagrams) {
    constexpr std::size_t kPackets = 26600;  // a second at 40 Mbit/s
    send(kPackets);
    EXPECT_TRUE(takes(kPackets)) << demux.packets();
    EXPECT_EQ(linesOfLoss(), 0U);
}

TEST_F(ABusyLoop, FindsNoMoreThanTheLimit) {
    send(LiveInput::kMostUnderWay + 700);
    EXPECT_TRUE(eventually([this] { return linesOfLoss() != 0; }));
    input.reset();
    loop.runUntil(EventLoop::Clock::now());
    EXPECT_LE(demux.packets(), LiveInput::kMostUnderWay);
    EXPECT_GT(demux.packets(), LiveInput::kMostUnderWay - kPacketsADatagram);
}

TEST(ALiveInput, SaysThatThereAreNoDescriptorsLeft) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer needs descriptors itself";
#endif
    recording::reset();
    std::string error;
    const auto name = dtvservice::parseInput("udp://127.0.0.1:5000", error);
    EventLoop loop;
    broadcast::Demux demux;
    dtvservice::InputReport report;
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none{0, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    { const LiveInput input(*name, loop, demux, report, dtvservice::Pacer::kDefaultBitRate); }
    setrlimit(RLIMIT_NOFILE, &before);
    const std::string problem = "udp://127.0.0.1:5000: no descriptor to end it by: Too many open files";
    EXPECT_EQ(report.reason(), problem);
    EXPECT_STREQ(report.stateName(), "failed");
    EXPECT_THAT(logged::withoutTraces(),
                testing::ElementsAre(
                    logged::tagged(blog::kFailure, "DtvService", "live_input.cpp", "LiveInput", problem + "\n")));
}
