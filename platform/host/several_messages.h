// SeveralMessages: messages that a service sends in one packet. Behind the mark "DTVM" stand, for each message, its
// length in network byte order, the message as it would be a packet alone, and a zero, for which a receiver has use.
// Threads: one at a time.
// Blocks:  never.
// Fails:   as each operation says; next() with a text that describes the error.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace host {

constexpr std::string_view kSeveralMark = "DTVM";

class SeveralMessages {
public:
    /// Bytes of a packet of several messages, at most: the tables of a service fit mostly.
    static constexpr std::size_t kMostBytes = std::size_t{16} << 10U;

    struct Packet {
        const std::uint8_t* bytes;
        std::size_t length;
    };

    /// `longestPacket`: that the socket takes.
    explicit SeveralMessages(std::size_t longestPacket) : mostBytes(std::min(longestPacket, kMostBytes)) {}

    bool empty() const { return bytes.empty(); }
    /// False when the message does not fit behind the others, or not at all.
    bool add(const std::uint8_t* message, std::size_t length);
    /// What to send: with a single message the message itself.
    Packet packet() const;
    void clear() { bytes.clear(); }

private:
    const std::size_t mostBytes;
    std::vector<std::uint8_t> bytes;
    std::size_t lengthOfFirst = 0;
};

/// The messages of a received packet, behind its mark, one after the other.
class ReceivedMessages {
public:
    ReceivedMessages(std::uint8_t* newBytes, std::size_t newLength) : bytes(newBytes), length(newLength) {}

    struct Message {
        std::uint8_t* bytes;
        std::size_t length;  ///< at least one byte more may be written
    };
    /// False behind the last message, and when the rest is none, with a text.
    bool next(Message& message, std::string& error);

private:
    std::uint8_t* bytes;
    std::size_t length;
};

}  // namespace host
