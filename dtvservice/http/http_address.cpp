// Addresses of the HTTP server.
#include "http_address.h"

#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <charconv>

namespace dtvservice {

namespace {

/// The bytes of a numeric address, 4 or 16; empty for a name.
std::string bytesOf(const std::string& host) {
    std::array<char, sizeof(in6_addr)> bytes{};
    if (inet_pton(AF_INET, host.c_str(), bytes.data()) == 1) {
        return {bytes.data(), sizeof(in_addr)};
    }
    return inet_pton(AF_INET6, host.c_str(), bytes.data()) == 1 ? std::string(bytes.data(), bytes.size()) : "";
}

std::string withoutBrackets(const std::string& host) {
    const bool hasThem = host.size() > 1 && host.front() == '[' && host.back() == ']';
    return hasThem ? host.substr(1, host.size() - 2) : host;
}

/// The host of a Host header, which may have a port.
std::string hostOf(const std::string& header) {
    const std::size_t colon = header.rfind(':');
    const std::size_t bracket = header.rfind(']');
    const bool hasPort = colon != std::string::npos && (bracket == std::string::npos || bracket < colon) &&
                         (bracket != std::string::npos || header.find(':') == colon);
    std::string host = withoutBrackets(hasPort ? header.substr(0, colon) : header);
    std::transform(host.begin(), host.end(), host.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + 32) : letter;
    });
    return host;
}

bool isAll(const std::string& bytes) {
    return !bytes.empty() && bytes.find_first_not_of('\0') == std::string::npos;
}

}  // namespace

bool HttpAddress::isLoopback() const {
    constexpr char kLoopbackNetwork = 127;
    const std::string bytes = bytesOf(host);
    return bytes == bytesOf("::1") || (bytes.size() == sizeof(in_addr) && bytes.front() == kLoopbackNetwork);
}

std::string HttpAddress::text() const {
    return (isIpv6() ? "[" + host + "]" : host) + ":" + std::to_string(port);
}

bool HttpAddress::isMeant(const std::string& hostHeader) const {
    const std::string wanted = hostOf(hostHeader);
    if (wanted == "localhost" || wanted == "127.0.0.1" || wanted == "::1") {
        return true;
    }
    const std::string bytes = bytesOf(wanted);
    return !bytes.empty() && (bytes == bytesOf(host) || isAll(bytesOf(host)));
}

std::optional<HttpAddress> parseHttpAddress(const std::string& text, std::string& error) {
    HttpAddress address;
    const std::size_t colon = text.rfind(':');
    const std::string port = colon == std::string::npos ? text : text.substr(colon + 1);
    const auto [end, failure] = std::from_chars(port.data(), port.data() + port.size(), address.port);
    if (failure != std::errc() || end != port.data() + port.size()) {
        error = "port \"" + port + "\" is not a number from 0 to 65535";
        return std::nullopt;
    }
    if (colon != std::string::npos) {
        address.host = withoutBrackets(text.substr(0, colon));
        if (bytesOf(address.host).empty()) {
            error = "\"" + text.substr(0, colon) + "\" is not a numeric address; one of IPv6 stands in brackets";
            return std::nullopt;
        }
    }
    return address;
}

}  // namespace dtvservice
