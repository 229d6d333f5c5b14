// HttpAddress: the value of --http, [ADDRESS:]PORT, and which requests are meant for it.
// Threads: any.
// Blocks:  never.
// Fails:   no value, and a text that says what is wrong.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace dtvservice {

struct HttpAddress {
    std::string host = "127.0.0.1";  ///< numeric, without brackets
    std::uint16_t port = 0;          ///< 0 for any

    bool isIpv6() const { return host.find(':') != std::string::npos; }
    /// Whether only this machine reaches it.
    bool isLoopback() const;
    /// HOST:PORT of a URL, an IPv6 address in brackets.
    std::string text() const;
    /// Whether a request with this Host header is meant for this server: for the loopback by its names, for the given
    /// address, or for any numeric address if the server listens at all of them. A page that gives its own name the
    /// machine's address is refused.
    bool isMeant(const std::string& hostHeader) const;
};

std::optional<HttpAddress> parseHttpAddress(const std::string& text, std::string& error);

}  // namespace dtvservice
