// Tests of sending lines to readers that are slow.
#include "control_socket.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

#include <thread>

TEST(AConnection, GivesUpAReaderThatTakesItsLineBitByBit) {
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
    control::Connection sender(ends[0]);
    std::thread reader([end = control::Connection(ends[1])] {
        char few[1024];
        while (recv(end.fd(), few, sizeof few, 0) > 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));  // a slow reader
        }
    });
    EXPECT_FALSE(sender.sendLine(std::string(std::size_t{50} << 20U, 'x'), std::chrono::milliseconds(50)));
    sender = control::Connection();
    reader.join();
}
