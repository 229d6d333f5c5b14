// Sends a recorded event by the operation of its message.
// Threads: the loop's.
// Blocks:  never.
// Fails:   never; an event for a disconnected browser is dropped.
#pragma once

#include "browsers.h"
#include "message_fields.h"

namespace dtvservice {

/// The values are those of all fields of the message, in their order.
void sendEvent(Browsers& browsers, Browser to, const message_fields::Message& message,
               const std::vector<message_fields::Value>& values);

}  // namespace dtvservice
