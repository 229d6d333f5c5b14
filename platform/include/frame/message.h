// What accompanies every message of the framework: its header, its addressing identifiers and where it came from.
// Plain values; copying them is safe on any thread.
#pragma once

#include <cstdint>

#include "frame/api.h"

namespace frame {

/// Header of a message. A message belongs to the handler that was registered with the same interface identifier,
/// message identifier and direction.
struct MsgMeta {
    std::int32_t firstWord = -1;    ///< reserved by the framework; members always send -1
    std::uint32_t interfaceId = 0;  ///< identifies the interface and the direction's half of it
    std::uint32_t messageId = 0;    ///< identifies the message within all interfaces
    std::uint8_t direction = 0;     ///< 0 for a command, 1 for an event
};

/// An identifier that names nobody in particular.
constexpr std::uint32_t kAnyId = 0xFFFFFFFFU;

/// Addressing of one message. A default-constructed object holds all-ones identifiers, which address every peer that
/// is connected; a service answers one peer by putting the `peer` of a received TransportInfo here.
struct DTV_PLATFORM_API MsgIds {
    std::uint32_t peer = kAnyId;         ///< connection that the message goes to
    std::uint32_t transaction = kAnyId;  ///< free for the platform; members pass it through

    /// The one shared object that carries no identifiers; handed to clients with every event. Nobody writes to it.
    static MsgIds none;
};

/// How a message reached this process. Sending operations accept one for symmetry and do not look at it.
struct TransportInfo {
    std::uint32_t peer = kAnyId;  ///< connection that the message came from; never reused while the process lives
};

}  // namespace frame
