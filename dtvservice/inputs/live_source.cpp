// Opens and reads live sources.
#include "live_source.h"

#include <arpa/inet.h>
#include <net/if.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

#include "descriptor_wait.h"
#include "dvb_source.h"
#include "repeated_messages.h"
#include "rtp.h"
#include "service_log.h"

namespace dtvservice {

namespace {

class StandardInput final : public ByteSource {
public:
    explicit StandardInput(int newWakeUp) : wakeUp(newWakeUp) {}

    std::size_t read(std::uint8_t* bytes, std::size_t capacity) override {
        while (waitFor(STDIN_FILENO, wakeUp)) {
            const ssize_t count = ::read(STDIN_FILENO, bytes, capacity);
            if (count >= 0) {
                return static_cast<std::size_t>(count);
            }
            if (errno != EINTR && errno != EAGAIN) {
                problem = std::string("cannot read standard input: ") + std::strerror(errno);
                return 0;
            }
        }
        return 0;
    }

private:
    int wakeUp;
};

class Datagrams final : public ByteSource {
public:
    Datagrams(const InputName& newInput, int newDescriptor, int newWakeUp, InputCounts& newCounts)
        : input(newInput), descriptor(newDescriptor), wakeUp(newWakeUp), counts(newCounts) {}
    ~Datagrams() override { close(descriptor); }

    std::size_t read(std::uint8_t* bytes, std::size_t capacity) override {
        while (at == pending.size()) {
            if (!receive()) {
                return 0;
            }
        }
        const std::size_t count = std::min(capacity, pending.size() - at);
        std::copy_n(pending.begin() + static_cast<std::ptrdiff_t>(at), count, bytes);
        at += count;
        return count;
    }

private:
    bool receive() {
        constexpr std::size_t kLongestDatagram = 65536;
        at = 0;
        pending.resize(kLongestDatagram);
        ssize_t count = 0;
        do {
            if (!waitFor(descriptor, wakeUp)) {
                pending.clear();
                return false;
            }
            count = recv(descriptor, pending.data(), pending.size(), MSG_DONTWAIT);
        } while (count < 0 && (errno == EINTR || errno == EAGAIN));
        if (count < 0) {
            problem = input.text + ": " + std::strerror(errno);
            pending.clear();
            return false;
        }
        pending.resize(static_cast<std::size_t>(count));
        if (input.kind == InputName::Kind::rtp) {
            pending = reorderer.take(pending.data(), pending.size());
            noteLoss();
        }
        return true;
    }

    void noteLoss() {
        const std::uint64_t lost = reorderer.lost() - countedLost;
        const std::uint64_t unreadable = reorderer.unreadable() - countedUnreadable;
        if (lost + unreadable == 0) {
            return;
        }
        countedLost += lost;
        countedUnreadable += unreadable;
        counts.rtpLost += lost;
        counts.notRtp += unreadable;
        const std::string text = std::to_string(reorderer.lost()) + " RTP packets lost, " +
                                 std::to_string(reorderer.unreadable()) + " datagrams that are none, so far";
        if (const auto line = messages.tell("loss", text, lost + unreadable)) {
            BLOG_TAGGED(blog::kUnsupported, "%s: %s\n", input.text.c_str(), line->c_str());
        }
    }

    InputName input;
    int descriptor;
    int wakeUp;
    InputCounts& counts;
    std::vector<std::uint8_t> pending;
    std::size_t at = 0;
    RtpReorderer reorderer;
    std::uint64_t countedLost = 0;
    std::uint64_t countedUnreadable = 0;
    RepeatedMessages messages;
};

bool joinIpv4(int descriptor, const sockaddr_in& group, const InputName& input, std::string& error) {
    if (!IN_MULTICAST(ntohl(group.sin_addr.s_addr))) {
        return true;
    }
    ip_mreq request{};
    request.imr_multiaddr = group.sin_addr;
    if (!input.interface.empty() && inet_pton(AF_INET, input.interface.c_str(), &request.imr_interface) != 1) {
        error = "interface \"" + input.interface + "\" is not an address";
        return false;
    }
    if (setsockopt(descriptor, IPPROTO_IP, IP_ADD_MEMBERSHIP, &request, sizeof request) != 0) {
        error = std::string("cannot join the group: ") + std::strerror(errno);
        return false;
    }
    return true;
}

bool joinIpv6(int descriptor, const sockaddr_in6& group, const InputName& input, std::string& error) {
    if (!IN6_IS_ADDR_MULTICAST(&group.sin6_addr)) {
        return true;
    }
    ipv6_mreq request{};
    request.ipv6mr_multiaddr = group.sin6_addr;
    request.ipv6mr_interface = input.interface.empty() ? 0 : if_nametoindex(input.interface.c_str());
    if (!input.interface.empty() && request.ipv6mr_interface == 0) {
        error = "no interface is named \"" + input.interface + "\"";
        return false;
    }
    if (setsockopt(descriptor, IPPROTO_IPV6, IPV6_JOIN_GROUP, &request, sizeof request) != 0) {
        error = std::string("cannot join the group: ") + std::strerror(errno);
        return false;
    }
    return true;
}

/// Sets SO_REUSEADDR for a multicast group, so that several inputs can listen to the same one.
int bindSocket(const addrinfo& address, const InputName& input, std::string& error) {
    const int made = socket(address.ai_family, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (made < 0) {
        error = std::strerror(errno);
        return -1;
    }
    const bool isIpv4 = address.ai_family == AF_INET;
    const auto* const ipv4 = reinterpret_cast<const sockaddr_in*>(address.ai_addr);
    const auto* const ipv6 = reinterpret_cast<const sockaddr_in6*>(address.ai_addr);
    const bool isGroup = isIpv4 ? IN_MULTICAST(ntohl(ipv4->sin_addr.s_addr)) : IN6_IS_ADDR_MULTICAST(&ipv6->sin6_addr);
    const int shared = isGroup ? 1 : 0;
    constexpr int kBuffer = 2 * 1024 * 1024;
    setsockopt(made, SOL_SOCKET, SO_REUSEADDR, &shared, sizeof shared);
    setsockopt(made, SOL_SOCKET, SO_RCVBUF, &kBuffer, sizeof kBuffer);
    if (bind(made, address.ai_addr, address.ai_addrlen) != 0) {
        error = std::strerror(errno);
    } else if (isIpv4 ? joinIpv4(made, *ipv4, input, error) : joinIpv6(made, *ipv6, input, error)) {
        return made;
    }
    close(made);
    return -1;
}

int openSocket(const InputName& input, std::string& error) {
    addrinfo hints{};
    hints.ai_socktype = SOCK_DGRAM;
    hints.ai_flags = AI_PASSIVE | AI_NUMERICHOST | AI_NUMERICSERV;
    addrinfo* found = nullptr;
    const int failure = getaddrinfo(input.host.empty() ? nullptr : input.host.c_str(),
                                    std::to_string(input.port).c_str(), &hints, &found);
    if (failure != 0) {
        error = "\"" + input.host + "\" is not a numeric address";
        return -1;
    }
    const int descriptor = bindSocket(*found, input, error);
    freeaddrinfo(found);
    return descriptor;
}

}  // namespace

std::unique_ptr<ByteSource> openLive(const InputName& input, int wakeUp, InputCounts& counts, std::string& error) {
    if (input.kind == InputName::Kind::standardInput) {
        return std::make_unique<StandardInput>(wakeUp);
    }
    if (input.kind == InputName::Kind::dvb) {
        return openDvb(input, wakeUp, error);
    }
    std::string problem;
    const int descriptor = openSocket(input, problem);
    if (descriptor < 0) {
        error = "cannot listen at " + input.text + ": " + problem;
        return nullptr;
    }
    return std::make_unique<Datagrams>(input, descriptor, wakeUp, counts);
}

}  // namespace dtvservice
