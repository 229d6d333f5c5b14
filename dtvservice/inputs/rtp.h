// RtpReorderer: RTP packets (RFC 3550) in the order of their sequence numbers. One that is late is waited for while up
// to kWindow packets behind it arrive; then it counts as lost.
// Threads: one.   Blocks: never.   Fails: what is no RTP packet is counted and dropped.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace dtvservice {

class RtpReorderer {
public:
    static constexpr std::size_t kWindow = 32;

    /// Takes a datagram; gives the payloads that are next in order now, one behind the other.
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
