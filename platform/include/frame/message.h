// The data that accompanies every message: its header, its addressing identifiers and its origin. Plain values that any
// thread may copy.
#pragma once

#include <cstdint>

#include "frame/api.h"

namespace frame {

/// Header of a message. The message goes to the handler that was registered with the same interface identifier, message
/// identifier and direction.
struct MsgMeta {
    std::int32_t firstWord = -1;    ///< reserved by the framework; members always send -1
    std::uint32_t interfaceId = 0;  ///< identifies the interface and the direction
    std::uint32_t messageId = 0;    ///< identifies the message among all interfaces
    std::uint8_t direction = 0;     ///< 0 for a command, 1 for an event
};

/// An identifier that means everyone.
constexpr std::uint32_t kAnyId = 0xFFFFFFFFU;

/// Addressing of one message. By default all identifiers are all ones, which addresses every connected peer. To answer
/// one peer, a service copies `peer` from the received TransportInfo.
struct DTV_PLATFORM_API MsgIds {
    std::uint32_t peer = kAnyId;         ///< connection that the message goes to
    std::uint32_t transaction = kAnyId;  ///< free for the platform; members pass it through

    /// One shared object without identifiers. Clients get it with every event. Nobody writes to it.
    static MsgIds none;
};

/// How a message reached this process. Sending operations accept one for symmetry and ignore it.
struct TransportInfo {
    std::uint32_t peer = kAnyId;  ///< connection that the message came from; never reused while the process lives
};

}  // namespace frame
