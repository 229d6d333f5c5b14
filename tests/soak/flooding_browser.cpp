// A browser that sends commands as fast as the service takes them, good ones and bad ones, and reads what comes back.
//   flooding_browser
// It prints "sent NUMBER" about every ten thousand commands. A signal ends it.
// Threads: the main one sends; another one reads and drops all events.
#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "message_transfer.h"
#include "platform/host/connection.h"
#include "platform/host/endpoint.h"
#include "platform/host/envelope.h"
#include "platform/host/section_ring.h"
#include "platform_common/record_image.h"

namespace {

using namespace lo::browserdvbservice;
using Packet = std::vector<std::uint8_t>;

template <typename Message, typename... Values>
Packet packetOf(const Values&... values) {
    const OutgoingRecord<Message> record(values...);
    const std::vector<std::uint8_t> image = platform_common::encodeRecord(*Message::table(), record.bytes());
    Packet packet(host::kEnvelopeSize);
    host::packEnvelope({Message::header(), 0, static_cast<std::uint32_t>(image.size())}, packet.data());
    packet.insert(packet.end(), image.begin(), image.end());
    return packet;
}

/// What a browser may send that means harm or is broken: requests up to and above their limits, and refused ones, which
/// cause log lines.
std::vector<Packet> flood() {
    constexpr unsigned int kSessions = 400;
    std::vector<Packet> packets;
    for (unsigned int number = 0; number < kSessions; ++number) {
        const std::string session = "session " + std::to_string(number);
        const std::string event = "event " + std::to_string(number);
        const auto service = static_cast<unsigned short>(28106 + number % 4);
        constexpr unsigned short kNetwork = 1;
        constexpr unsigned short kStream = 1025;
        packets.push_back(packetOf<messages::CmdFilterOpen>(session, number, OpenFilterMatchMask_t()));
        packets.push_back(packetOf<messages::CmdStartPMTRequest>(session, unsigned{service}));
        packets.push_back(packetOf<messages::CmdAddStreamEventListener>(number, kNetwork, kStream, service, short{-1},
                                                                        std::string("path"), event));
        packets.push_back(packetOf<messages::CmdStartTemiTimelineRequest>(300U, 1U, 0U));
        packets.push_back(packetOf<messages::CmdFilterOpen>(session, 9000U, OpenFilterMatchMask_t()));
        packets.push_back(packetOf<messages::CmdHandleHbbtvStatus>(static_cast<int>(number)));
        packets.push_back(packetOf<messages::CmdRemoveStreamEventListener>(number, kNetwork, kStream, service,
                                                                           short{-1}, std::string("path"), event));
        packets.push_back(packetOf<messages::CmdFilterClose>(session));
        packets.push_back(packetOf<messages::CmdStartOSDDetection>(number));
        packets.push_back(packetOf<messages::CmdSendDrmMessage>(std::uint64_t{number}, static_cast<unsigned short>(1),
                                                                static_cast<unsigned short>(0), session, event));
        packets.push_back(packetOf<messages::CmdSendPtsRequest>(number));
        packets.push_back(Packet(host::kEnvelopeSize, 0xFF));
    }
    return packets;
}

void waitFor(int socket, short event) {
    pollfd waiting{socket, event, 0};
    poll(&waiting, 1, -1);
}

[[noreturn]] void readAll(int socket) {
    std::vector<std::uint8_t> packet(1U << 20U);
    while (true) {
        const ssize_t received = recv(socket, packet.data(), packet.size(), 0);
        if (received == 0) {
            std::exit(0);
        }
        if (received < 0) {
            waitFor(socket, POLLIN);
        }
    }
}

bool sendOne(int socket, const Packet& packet) {
    while (send(socket, packet.data(), packet.size(), MSG_NOSIGNAL) < 0) {
        if (errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR) {
            return false;
        }
        waitFor(socket, POLLOUT);
    }
    return true;
}

}  // namespace

int main() {
    std::string problem;
    const int socket = host::connectToService(kServiceName, problem);
    if (socket < 0) {
        std::fprintf(stderr, "no service: %s\n", problem.c_str());
        return 1;
    }
    // With a queue that nobody reads, so that filters are accepted.
    host::Connection connection(socket, 1);
    const auto ring = host::SectionRing::create(8192, 16, problem);
    connection.send(reinterpret_cast<const std::uint8_t*>(host::kQueueAnnounced.data()), host::kQueueAnnounced.size());
    const std::string offer = std::string(host::kQueueMark) + "flood";
    connection.send(reinterpret_cast<const std::uint8_t*>(offer.data()), offer.size(), ring);
    std::thread([socket] { readAll(socket); }).detach();
    const std::vector<Packet> packets = flood();
    for (unsigned long long sent = 0;;) {
        for (const Packet& packet : packets) {
            if (!sendOne(socket, packet)) {
                return 1;
            }
        }
        sent += packets.size();
        std::printf("sent %llu\n", sent);
        std::fflush(stdout);
    }
}
