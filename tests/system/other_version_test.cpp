// Peers that speak another version of the transport, or send records of another layout.
#include <sys/socket.h>

#include "library_browser.h"
#include "message_transfer.h"

namespace {

using faults::timesIn;

/// A service that sends what it likes.
class RawService {
public:
    RawService() : listening(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0)) {
        unlink(path.c_str());
        const sockaddr_un address = faults::addressOf(path);
        EXPECT_EQ(bind(listening, faults::asGeneric(address), sizeof address), 0);
        EXPECT_EQ(listen(listening, 1), 0);
    }
    RawService(const RawService&) = delete;
    RawService& operator=(const RawService&) = delete;
    ~RawService() {
        // What a browser has not read is lost if it gets the end of a connection with unread commands.
        char byte = 0;
        while (recv(connection, &byte, 1, MSG_DONTWAIT) > 0) {
        }
        unlink(path.c_str());
        close(listening);
        close(connection);
    }
    void takesABrowser() {
        connection = accept4(listening, nullptr, nullptr, SOCK_CLOEXEC);
        ASSERT_GE(connection, 0);
    }
    void send(const std::string& bytes) const {
        EXPECT_EQ(::send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
    }

private:
    const std::string path = faults::kRunDirectory + "/browserdvbservice.sock";
    int listening;
    int connection = -1;
};

using ABrowserOfAnotherVersion = faults::ALibraryBrowser;
using AServiceOfAnotherVersion = faults::ALibraryBrowser;

constexpr int kPackets = 50;

}  // namespace

TEST_F(ABrowserOfAnotherVersion, IsToldOfOnceAndDisturbsNobody) {
    const ServiceProcess service;
    ASSERT_TRUE(connects());
    {
        faults::RawBrowser other;
        ASSERT_TRUE(other.isConnected);
        const frame::MsgMeta header = lo::browserdvbservice::messages::CmdSendPMTCache::header();
        for (int count = 0; count < kPackets; ++count) {
            other.send(faults::packet("DTV2", header.interfaceId, header.messageId, header.direction, {'\0'}));
        }
        // A command of this version whose record has grown.
        other.send(faults::packet("DTV1", header.interfaceId, header.messageId, header.direction, "longer"));
        ASSERT_TRUE(eventually([&] { return timesIn(service.log(), "; dropped") == 1; }));
    }
    ASSERT_TRUE(eventually([&] { return timesIn(service.log(), ": 51 messages were dropped in all") == 1; }))
        << service.log();
    EXPECT_EQ(timesIn(service.log(), "packet does not begin with the envelope's mark; dropped"), 1U);
    EXPECT_EQ(timesIn(service.log(), "; dropped"), 1U);
    EXPECT_TRUE(tunesTo(28107));
}

TEST_F(AServiceOfAnotherVersion, IsToldOfOnceAndReplacedByOneOfThisVersion) {
    {
        RawService other;
        ASSERT_TRUE(connects());
        other.takesABrowser();
        const frame::MsgMeta header = lo::browserdvbservice::messages::OnPtsNotify::header();
        for (int count = 0; count < kPackets; ++count) {
            other.send(faults::packet("DTV2", header.interfaceId, header.messageId, header.direction, {'\0'}));
        }
        other.send(faults::packet("DTV1", header.interfaceId, header.messageId, header.direction, "shorter"));
        ASSERT_TRUE(eventually([] { return timesIn(faults::ownLog(), "; dropped") == 1; })) << faults::ownLog();
    }
    ASSERT_TRUE(isCutOff());
    EXPECT_TRUE(eventually([] { return timesIn(faults::ownLog(), ": 51 messages were dropped in all") == 1; }))
        << faults::ownLog();
    EXPECT_EQ(timesIn(faults::ownLog(), "; dropped"), 1U);
    const ServiceProcess service;
    ASSERT_TRUE(connects());
    EXPECT_TRUE(tunesTo(28107));
}
