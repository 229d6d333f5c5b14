// Listens for HTTP.
#include "listening_socket.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace dtvservice {

namespace {

/// The address as the system takes it.
struct SystemAddress {
    sockaddr_storage storage{};
    socklen_t size = 0;
};

SystemAddress systemAddress(const HttpAddress& address) {
    SystemAddress result;
    if (address.isIpv6()) {
        auto* const sixth = reinterpret_cast<sockaddr_in6*>(&result.storage);
        sixth->sin6_family = AF_INET6;
        sixth->sin6_port = htons(address.port);
        inet_pton(AF_INET6, address.host.c_str(), &sixth->sin6_addr);
        result.size = sizeof *sixth;
    } else {
        auto* const fourth = reinterpret_cast<sockaddr_in*>(&result.storage);
        fourth->sin_family = AF_INET;
        fourth->sin_port = htons(address.port);
        inet_pton(AF_INET, address.host.c_str(), &fourth->sin_addr);
        result.size = sizeof *fourth;
    }
    return result;
}

std::uint16_t portOf(int descriptor) {
    SystemAddress bound;
    bound.size = sizeof bound.storage;
    if (getsockname(descriptor, reinterpret_cast<sockaddr*>(&bound.storage), &bound.size) != 0) {
        return 0;
    }
    return ntohs(bound.storage.ss_family == AF_INET6 ? reinterpret_cast<const sockaddr_in6*>(&bound.storage)->sin6_port
                                                     : reinterpret_cast<const sockaddr_in*>(&bound.storage)->sin_port);
}

}  // namespace

int listenAt(HttpAddress& address, std::string& error) {
    const SystemAddress wanted = systemAddress(address);
    const int descriptor = socket(wanted.storage.ss_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    if (descriptor >= 0 && setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) == 0 &&
        bind(descriptor, reinterpret_cast<const sockaddr*>(&wanted.storage), wanted.size) == 0 &&
        listen(descriptor, SOMAXCONN) == 0) {
        address.port = portOf(descriptor);
        return descriptor;
    }
    error = "cannot listen at " + address.text() + ": " + std::strerror(errno);
    if (descriptor >= 0) {
        close(descriptor);
    }
    return -1;
}

}  // namespace dtvservice
