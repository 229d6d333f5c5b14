// IdleBrowser: another browser process on the same service, which asks nothing.
// Blocks:  the constructor until it is connected.
#pragma once

#include <sys/socket.h>
#include <unistd.h>

#include <memory>
#include <vector>

#include "peer.h"

namespace bench {

class IdleBrowser {
public:
    IdleBrowser() : sockets(SOCK_SEQPACKET), process("idle_browser", {}, sockets.peers) {
        char connected = 0;
        recv(sockets.own, &connected, sizeof connected, 0);
    }
    IdleBrowser(const IdleBrowser&) = delete;
    IdleBrowser& operator=(const IdleBrowser&) = delete;
    ~IdleBrowser() { close(sockets.own); }

private:
    const SocketPair sockets;
    const Peer process;
};

inline std::vector<std::unique_ptr<IdleBrowser>> idleBrowsers(std::int64_t count) {
    std::vector<std::unique_ptr<IdleBrowser>> browsers;
    for (; count > 0; --count) {
        browsers.push_back(std::make_unique<IdleBrowser>());
    }
    return browsers;
}

}  // namespace bench
