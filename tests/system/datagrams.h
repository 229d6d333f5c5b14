// Broadcasts as datagrams, and the sockets that send them to a service.
#pragma once

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "broadcasts.h"

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
