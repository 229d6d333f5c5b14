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
    const bool isKnown = getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &credentials, &length) == 0;
    const locks::Lock lock(mutex);
    byPeer[peer] = {isKnown ? static_cast<std::uint32_t>(credentials.pid) : 0, socket};
}

void PeerProcesses::forget(std::uint32_t peer) {
    const locks::Lock lock(mutex);
    byPeer.erase(peer);
}

std::uint32_t PeerProcesses::find(std::uint32_t peer) {
    const locks::Lock lock(mutex);
    const auto found = byPeer.find(peer);
    return found == byPeer.end() ? 0 : found->second.process;
}

/// The thread that receives from the peer finds the end, and closes the connection in order.
bool PeerProcesses::cutOff(std::uint32_t peer) {
    const locks::Lock lock(mutex);
    const auto found = byPeer.find(peer);
    return found != byPeer.end() && shutdown(found->second.socket, SHUT_RDWR) == 0;
}

}  // namespace host

std::uint32_t dtv_optional::processOfPeer(std::uint32_t peer) {
    return host::PeerProcesses::instance().find(peer);
}

bool dtv_optional::disconnectPeer(std::uint32_t peer) {
    return host::PeerProcesses::instance().cutOff(peer);
}
