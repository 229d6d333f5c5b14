// Connects and listens on Unix-domain sockets that keep packet boundaries.
#include "endpoint.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "connection.h"
#include "descriptors.h"
#include "host_log.h"
#include "run_directory.h"
#include "settings.h"

namespace host {

namespace {

constexpr int kBacklog = 64;
constexpr int kSendBuffer = 1 << 20;

std::string pathOf(const std::string& serviceName, const char* suffix) {
    return settings().runDirectory + "/" + serviceName + suffix;
}

/// False if the path is too long.
bool fillAddress(const std::string& path, sockaddr_un& address) {
    address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        return false;
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return true;
}

int newSocket() {
    return aboveStandard(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

void widenSendBuffer(int descriptor) {
    setsockopt(descriptor, SOL_SOCKET, SO_SNDBUF, &kSendBuffer, sizeof kSendBuffer);
}

}  // namespace

int connectToService(const std::string& serviceName, std::string& problem) {
    const std::string path = pathOf(serviceName, ".sock");
    sockaddr_un address;
    if (!fillAddress(path, address)) {
        problem = "socket path " + path + " is too long";
        return -1;
    }
    const int descriptor = newSocket();
    if (descriptor < 0) {
        problem = std::string("cannot create a socket: ") + std::strerror(errno);
        return -1;
    }
    if (connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        ::close(descriptor);
        return -1;
    }
    if (!peerIsOurs(descriptor)) {
        problem = "the service at " + path + " belongs to another user; refused";
        ::close(descriptor);
        return -1;
    }
    widenSendBuffer(descriptor);
    fcntl(descriptor, F_SETFL, 0);  // the receive waits
    return descriptor;
}

ServiceEndpoint::~ServiceEndpoint() {
    close();
}

int ServiceEndpoint::open(const std::string& serviceName) {
    if (!prepareRunDirectory(settings().runDirectory)) {
        return -EACCES;
    }
    // The lock, not the socket file, shows that a service runs: the system releases it when the process ends, even by a
    // crash.
    const std::string lockPath = pathOf(serviceName, ".lock");
    lockFile = aboveStandard(::open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (lockFile < 0 || flock(lockFile, LOCK_EX | LOCK_NB) != 0) {
        const int error = errno;
        BLOG_TAGGED(blog::kFailure, "cannot take %s: %s\n", lockPath.c_str(),
                    error == EWOULDBLOCK ? "another service runs under this name" : std::strerror(error));
        close();
        return error == EWOULDBLOCK ? -EADDRINUSE : -error;
    }
    path = pathOf(serviceName, ".sock");
    unlink(path.c_str());
    sockaddr_un address;
    errno = ENAMETOOLONG;
    listening = fillAddress(path, address) ? newSocket() : -1;
    if (listening < 0 || bind(listening, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        chmod(path.c_str(), 0600) != 0 || listen(listening, kBacklog) != 0) {
        const int error = errno;
        BLOG_TAGGED(blog::kFailure, "cannot listen at %s: %s\n", path.c_str(), std::strerror(error));
        close();
        return -error;
    }
    return 0;
}

void ServiceEndpoint::close() {
    if (listening >= 0) {
        unlink(path.c_str());
        ::close(listening);
        listening = -1;
    }
    if (lockFile >= 0) {
        ::close(lockFile);
        lockFile = -1;
    }
}

int ServiceEndpoint::accept(std::string& problem) {
    const int descriptor = aboveStandard(accept4(listening, nullptr, nullptr, SOCK_CLOEXEC));
    if (descriptor < 0) {
        const bool hasGone = errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR || errno == ECONNABORTED;
        problem = hasGone ? "" : std::strerror(errno);
        return -1;
    }
    if (!peerIsOurs(descriptor)) {
        BLOG_TAGGED(blog::kFailure, "a client of another user was refused\n");
        ::close(descriptor);
        return -1;
    }
    widenSendBuffer(descriptor);
    return descriptor;
}

}  // namespace host
