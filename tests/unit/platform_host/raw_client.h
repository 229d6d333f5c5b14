// A client that is not the platform's: sends any bytes and descriptors to a service of the toy interface.
#pragma once

#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "own_log.h"

class RawClient {
public:
    explicit RawClient(const std::string& name) : descriptor(socket(AF_UNIX, SOCK_SEQPACKET, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::string path = kOwnRunDirectory + "/" + name + ".sock";
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        good = connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    }
    RawClient(const RawClient&) = delete;
    RawClient& operator=(const RawClient&) = delete;
    ~RawClient() { close(descriptor); }
    void send(const std::vector<std::uint8_t>& bytes) {
        EXPECT_EQ(::send(descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
    }
    /// Gives a section queue with these descriptors attached.
    void giveQueue(const std::string& name, const std::vector<int>& attached) {
        send("DTVA", {});
        send("DTVQ" + name, attached);
    }
    void send(const std::string& bytes, const std::vector<int>& attached) {
        std::string packet = bytes;
        iovec piece{packet.data(), packet.size()};
        std::vector<cmsghdr> control(CMSG_SPACE(attached.size() * sizeof(int)) / sizeof(cmsghdr) + 1);
        msghdr message{};
        message.msg_iov = &piece;
        message.msg_iovlen = 1;
        if (!attached.empty()) {
            message.msg_control = control.data();
            message.msg_controllen = CMSG_SPACE(attached.size() * sizeof(int));
            control[0].cmsg_level = SOL_SOCKET;
            control[0].cmsg_type = SCM_RIGHTS;
            control[0].cmsg_len = CMSG_LEN(attached.size() * sizeof(int));
            std::memcpy(CMSG_DATA(control.data()), attached.data(), attached.size() * sizeof(int));
        }
        EXPECT_EQ(sendmsg(descriptor, &message, MSG_NOSIGNAL), static_cast<ssize_t>(packet.size()));
    }
    /// The next packet.
    std::string received() const { return receivedWith(0); }
    /// The next packet if it is there; else nothing.
    std::string receivedNow() const { return receivedWith(MSG_DONTWAIT); }
    /// Bytes that the service has not received yet.
    int unread() const {
        int bytes = -1;
        EXPECT_EQ(ioctl(descriptor, TIOCOUTQ, &bytes), 0);
        return bytes;
    }
    bool good = false;

private:
    std::string receivedWith(int flags) const {
        std::string packet(std::size_t{1} << 16U, '\0');
        const ssize_t length = recv(descriptor, packet.data(), packet.size(), flags);
        return packet.substr(0, static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
    }

    int descriptor;
};

/// A complete packet of the test command.
inline std::vector<std::uint8_t> goodPacket() {
    return {'D',  'T',  'V', '1', 0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0,    100, 0, 0, 0, 1, 0, 0, 0, 0,   0xFF, 0xFF,
            0xFF, 0xFF, 0,   0,   0,    15,   7,    0,    0, 1, 0x2C, 0,   0, 0, 2, 0, 0, 0, 0, 'h', 'i'};
}
