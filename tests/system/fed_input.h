// A service whose input the test feeds, datagram by datagram, so that results do not depend on the speed of either.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include "raw_browser.h"

constexpr std::size_t kPacketsADatagram = 7;

inline sockaddr_in addressOf(const char* host, std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    inet_pton(AF_INET, host, &address.sin_addr);
    return address;
}

inline const sockaddr* asGeneric(const sockaddr_in& address) {
    return reinterpret_cast<const sockaddr*>(&address);
}

class Socket {
public:
    Socket() : descriptor(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {}
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;
    ~Socket() { close(descriptor); }

    /// Binds to a free loopback port.
    std::uint16_t bindSomewhere() const {
        sockaddr_in address = addressOf("127.0.0.1", 0);
        EXPECT_EQ(bind(descriptor, asGeneric(address), sizeof address), 0);
        socklen_t size = sizeof address;
        getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &size);
        return ntohs(address.sin_port);
    }
    void send(const std::string& bytes, const sockaddr_in& to) const {
        sendto(descriptor, bytes.data(), bytes.size(), 0, asGeneric(to), sizeof to);
    }

private:
    int descriptor;
};

inline std::uint16_t freePort() {
    const Socket socket;
    return socket.bindSomewhere();
}

inline std::vector<std::string> datagramsOf(const std::string& bytes) {
    std::vector<std::string> datagrams;
    for (std::size_t at = 0; at < bytes.size(); at += kPacketSize * kPacketsADatagram) {
        datagrams.push_back(bytes.substr(at, kPacketSize * kPacketsADatagram));
    }
    return datagrams;
}

/// `seconds` of a generated broadcast, from a little after `second` on, so that a test can repeat one state of its
/// tables.
inline std::vector<std::string> partOf(const std::string& broadcast, std::size_t second, std::size_t seconds) {
    constexpr std::size_t kPacketsASecond = 1000;
    constexpr std::size_t kSettled = 300;
    return datagramsOf(broadcast.substr((second * kPacketsASecond + kSettled) * kPacketSize,
                                        (seconds * kPacketsASecond - kSettled) * kPacketSize));
}

class AnInputThatComesByItself : public ARawBrowser {
protected:
    /// Sends datagrams in order until the service is presented.
    template <typename Send>
    bool arrives(Send send) {
        const lo::browserdvbservice::TuneInfoChannel channel = channelOf(kSample.services[1]);
        const std::string pmt = shownValue(asText(tsmake::pmtSection(kSample.services[1])));
        std::size_t index = 0;
        return eventually([&] {
            for (int count = 0; count < 20; ++count) {
                send(datagrams[index % datagrams.size()], index);
                ++index;
            }
            frame::MsgIds ids;
            service->cmdTuneToService(ids, frame::TransportInfo(), channel);
            return heard("onPmtDataChange(1, 1025, 28107, 0, " + pmt + ")");
        });
    }

    /// Repeats a broadcast until the condition holds.
    template <typename Condition>
    bool playsUntil(std::uint16_t port, const std::vector<std::string>& broadcast, Condition condition) {
        std::size_t index = 0;
        return eventually([&] {
            sender.send(broadcast[index++ % broadcast.size()], addressOf("127.0.0.1", port));
            return condition();
        });
    }

    const std::vector<std::string> datagrams = datagramsOf(fileText(SAMPLE_FILE));
    const Socket sender;
};
