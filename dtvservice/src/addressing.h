// Whom an event goes to.
#pragma once

#include "frame/message.h"

namespace dtvservice {

/// Events are sent, so they came from nowhere.
inline const frame::TransportInfo kNoTransport;

/// One browser alone.
inline frame::MsgIds only(std::uint32_t browser) {
    frame::MsgIds ids;
    ids.peer = browser;
    return ids;
}

}  // namespace dtvservice
