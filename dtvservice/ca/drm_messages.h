// DrmMessages: browsers' messages to a CA system that the operator has not answered yet.
// Threads: the loop's.
// Blocks:  never.
// Fails:   add() refuses messages above a limit, because the operator may never answer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <optional>
#include <string>

namespace dtvservice {

struct DrmMessage {
    std::uint32_t browser = 0;
    std::uint64_t session = 0;
    std::uint16_t caSystemId = 0;
    std::string type;
    std::string text;
};

class DrmMessages {
public:
    /// Limits per browser.
    static constexpr std::size_t kMostMessages = 64;
    static constexpr std::size_t kMostText = std::size_t{1024} * 1024;  // bytes of types and texts

    /// False if the browser would exceed a limit.
    bool add(DrmMessage message);
    /// Removes and returns the oldest message of a session.
    std::optional<DrmMessage> take(std::uint64_t session);
    void forget(std::uint32_t browser);
    /// Oldest first.
    const std::list<DrmMessage>& all() const { return messages; }

private:
    std::list<DrmMessage> messages;
};

}  // namespace dtvservice
