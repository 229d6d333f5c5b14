// DrmMessages: browsers' messages to a CA system that the operator has not answered yet.
// Threads: the loop's.   Blocks: never.   Fails: by refusing what is too much: an operator may never answer.
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
    /// Of one browser.
    static constexpr std::size_t kMostMessages = 64;
    static constexpr std::size_t kMostText = 1024 * 1024;  // bytes of types and texts

    /// False where too much of that browser waits.
    bool add(DrmMessage message);
    /// Takes out the oldest of a session.
    std::optional<DrmMessage> take(std::uint64_t session);
    void forget(std::uint32_t browser);
    /// The oldest first.
    const std::list<DrmMessage>& all() const { return messages; }

private:
    std::list<DrmMessage> messages;
};

}  // namespace dtvservice
