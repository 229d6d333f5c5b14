// The wire of the fuzzers: a transport without sockets and threads. It passes the bytes of a message to the handler of
// the member under test on the caller's thread, decoded as every platform does it. What the member sends is encoded and
// then dropped, or passed to a spy.
// Threads: one.
// Blocks:  never.
// Fails:   deliver() with false if the bytes are no record of that message.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "frame/lmq_io_service.h"

namespace fuzz::wire {

/// A handle for a member that no process starts.
frameLmqIOService* newService();

/// The number of messages that the member handles, and the place of one among them, in the order of registration.
std::size_t handlers();
std::size_t placeOf(const frame::MsgMeta& header);

/// Passes a record's image to the handler at `place`, modulo the number of handlers.
bool deliver(std::size_t place, std::uint32_t peer, const std::vector<std::uint8_t>& image);

/// Gets the header and the image of each message that the member sends.
using Spy = std::function<void(const frame::MsgMeta& header, const std::vector<std::uint8_t>& image)>;
void setSpy(Spy spy);

}  // namespace fuzz::wire
