// Unix-domain stream sockets.
#include "control_socket.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace control {

namespace {

using Clock = std::chrono::steady_clock;

/// False if the path is too long for a socket.
bool makeAddress(const std::string& path, sockaddr_un& address, std::string& error) {
    address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        error = path + ": too long for a socket";
        return false;
    }
    std::memcpy(address.sun_path, path.c_str(), path.size());
    return true;
}

const sockaddr* asGeneric(const sockaddr_un& address) {
    return reinterpret_cast<const sockaddr*>(&address);
}

int makeSocket(int flags = 0) {
    return socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | flags, 0);
}

/// False at the end of the time.
bool waitForSpace(int descriptor, Clock::time_point end) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
    if (left.count() <= 0) {
        return false;
    }
    pollfd space = {descriptor, POLLOUT, 0};
    poll(&space, 1, static_cast<int>(left.count()));
    return true;
}

}  // namespace

std::string runDirectory() {
    if (const char* const directory = std::getenv("DTV_RUN_DIR"); directory != nullptr && directory[0] == '/') {
        return directory;
    }
    if (const char* const runtime = std::getenv("XDG_RUNTIME_DIR"); runtime != nullptr && runtime[0] == '/') {
        return std::string(runtime) + "/dtv";
    }
    return "/tmp/dtv-" + std::to_string(getuid());
}

std::string defaultSocketPath() {
    return runDirectory() + "/dtvctl.sock";
}

Connection::Connection(Connection&& other) noexcept
    : descriptor(std::exchange(other.descriptor, -1)),
      received(std::move(other.received)),
      searched(std::exchange(other.searched, 0)) {}

Connection& Connection::operator=(Connection&& other) noexcept {
    std::swap(descriptor, other.descriptor);
    std::swap(received, other.received);
    std::swap(searched, other.searched);
    return *this;
}

Connection::~Connection() {
    if (descriptor >= 0) {
        close(descriptor);
    }
}

Connection Connection::connectTo(const std::string& path, std::string& error) {
    sockaddr_un address{};
    if (!makeAddress(path, address, error)) {
        return Connection();
    }
    Connection connection(makeSocket());
    if (!connection || connect(connection.fd(), asGeneric(address), sizeof address) != 0) {
        error = path + ": " + std::strerror(errno) + "; is dtvserviced running?";
        return Connection();
    }
    return connection;
}

std::optional<uid_t> Connection::peerUser() const {
    ucred peer{};
    socklen_t size = sizeof peer;
    return getsockopt(descriptor, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 ? std::optional<uid_t>(peer.uid)
                                                                              : std::nullopt;
}

bool Connection::sendLine(const std::string& line, std::chrono::milliseconds longest) {
    const auto end = Clock::now() + longest;
    const std::string bytes = line + "\n";
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        const ssize_t count = send(descriptor, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count > 0) {
            sent += static_cast<std::size_t>(count);
        } else if (errno == EAGAIN ? !waitForSpace(descriptor, end) : errno != EINTR) {
            return false;
        }
    }
    return true;
}

std::optional<std::size_t> Connection::sendSome(std::string_view bytes) {
    const ssize_t count = send(descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (count >= 0) {
        return static_cast<std::size_t>(count);
    }
    const bool isFull = errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
    return isFull ? std::optional<std::size_t>(0) : std::nullopt;
}

void Connection::waitAtMost(std::chrono::seconds longest) const {
    timeval time{};
    time.tv_sec = static_cast<decltype(time.tv_sec)>(longest.count());
    setsockopt(descriptor, SOL_SOCKET, SO_RCVTIMEO, &time, sizeof time);
}

bool Connection::fill() {
    char bytes[65536];
    ssize_t count = 0;
    do {
        count = recv(descriptor, bytes, sizeof bytes, 0);
    } while (count < 0 && errno == EINTR);
    if (count <= 0) {
        return false;
    }
    received.append(bytes, static_cast<std::size_t>(count));
    return true;
}

std::optional<std::string> Connection::takeLine() {
    const std::size_t end = received.find('\n', searched);
    searched = end == std::string::npos ? received.size() : 0;
    if (end == std::string::npos) {
        return std::nullopt;
    }
    std::string line = received.substr(0, end);
    received.erase(0, end + 1);
    return line;
}

std::string Connection::takeBytes() {
    searched = 0;
    return std::exchange(received, std::string());
}

std::optional<std::string> Connection::receiveAnswer() {
    while (received.size() <= kLongestAnswer) {
        if (std::optional<std::string> line = takeLine()) {
            return line;
        }
        if (!fill()) {
            break;
        }
    }
    return std::nullopt;
}

Listener::Listener(const std::string& newPath, std::string& error) : path(newPath) {
    sockaddr_un address{};
    if (!makeAddress(path, address, error)) {
        return;
    }
    // Only one service runs at a time: it holds the service's name. A socket at this path is therefore a leftover.
    unlink(path.c_str());
    const int made = makeSocket(SOCK_NONBLOCK);
    const mode_t before = umask(0177);
    const bool listening =
        made >= 0 && bind(made, asGeneric(address), sizeof address) == 0 && listen(made, SOMAXCONN) == 0;
    umask(before);
    if (listening) {
        descriptor = made;
        return;
    }
    error = path + ": " + std::strerror(errno);
    if (made >= 0) {
        close(made);
    }
}

Listener::~Listener() {
    if (descriptor >= 0) {
        close(descriptor);
        unlink(path.c_str());
    }
}

Connection Listener::accept(std::string& problem) const {
    Connection connection(accept4(descriptor, nullptr, nullptr, SOCK_CLOEXEC));
    if (!connection) {
        const bool hasGone = errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR || errno == ECONNABORTED;
        problem = hasGone ? "" : std::strerror(errno);
        return connection;
    }
    constexpr uid_t kRoot = 0;
    const std::optional<uid_t> user = connection.peerUser();
    return user == geteuid() || user == kRoot ? std::move(connection) : Connection();
}

}  // namespace control
