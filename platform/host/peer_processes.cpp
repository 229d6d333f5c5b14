// Keeps the processes of peers.
#include "peer_processes.h"

#include <sys/socket.h>

#include "dtv_optional/peer_process.h"

namespace host {

PeerProcesses& PeerProcesses::instance() {
    static auto* const only = new PeerProcesses();
    return *only;
}

void PeerProcesses::add(std::uint32_t peer, int socket) {
    ucred credentials{};
    socklen_t length = sizeof credentials;
    if (getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &credentials, &length) == 0) {
        const locks::Lock lock(mutex);
        byPeer[peer] = static_cast<std::uint32_t>(credentials.pid);
    }
}

void PeerProcesses::forget(std::uint32_t peer) {
    const locks::Lock lock(mutex);
    byPeer.erase(peer);
}

std::uint32_t PeerProcesses::find(std::uint32_t peer) {
    const locks::Lock lock(mutex);
    const auto found = byPeer.find(peer);
    return found == byPeer.end() ? 0 : found->second;
}

}  // namespace host

std::uint32_t dtv_optional::processOfPeer(std::uint32_t peer) {
    return host::PeerProcesses::instance().find(peer);
}
