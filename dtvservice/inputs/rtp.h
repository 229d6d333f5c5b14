// RtpReorderer: puts RTP packets (RFC 3550) in the order of their sequence numbers. It waits for a late packet until
// more than kWindow later packets have arrived; then the late one counts as lost.
// Threads: one.
// Blocks:  never.
// Fails:   a datagram that is not an RTP packet is counted and dropped.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace dtvservice {

class RtpReorderer {
public:
    static constexpr std::size_t kWindow = 32;

    /// Takes a datagram. Returns the concatenated payloads that are next in order.
    std::vector<std::uint8_t> take(const std::uint8_t* datagram, std::size_t size);

    std::uint64_t lost() const { return lost_; }
    std::uint64_t repeated() const { return repeated_; }
    std::uint64_t unreadable() const { return unreadable_; }

private:
    void skipGap();

    std::optional<std::uint64_t> next;                           // extended sequence number
    std::map<std::uint64_t, std::vector<std::uint8_t>> waiting;  // payloads by extended sequence number
    std::uint64_t lost_ = 0;
    std::uint64_t repeated_ = 0;
    std::uint64_t unreadable_ = 0;
};

}  // namespace dtvservice
