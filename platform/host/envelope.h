// The envelope: the header before a record's image in a packet on the socket. All words are in network byte order.
//
//    0        4        8        12       16   17       20       24       28
//    +--------+--------+--------+--------+----+--------+--------+--------+-- - -
//    | "DTV1" | first  | inter- | message|dir.| zero   | trans- | image  | image
//    |        | word   | face id| id     |    |        | action | length |
//    +--------+--------+--------+--------+----+--------+--------+--------+-- - -
//
// A packet that begins with "DTVM" has several messages (several_messages.h).
//
// A packet that begins with "DTVQ" has no envelope. A client gives a section queue to the service with it: the queue's
// name stands behind the mark, and the descriptor of its memory is attached. A packet of "DTVA" comes before it,
// because a service looks for a descriptor only when one is announced: to look makes each receive slower.
//
// Threads: any.
// Blocks:  never.
// Fails:   with a text that describes the error.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "frame/message.h"

namespace host {

constexpr std::size_t kEnvelopeSize = 28;
constexpr std::string_view kQueueMark = "DTVQ";
constexpr std::string_view kQueueAnnounced = "DTVA";

struct Envelope {
    frame::MsgMeta header;
    std::uint32_t transaction = frame::kAnyId;
    std::uint32_t imageLength = 0;
};

/// Whether the packet begins with the envelope's mark.
bool beginsEnvelope(const std::uint8_t* packet, std::size_t length);

/// Writes kEnvelopeSize bytes.
void packEnvelope(const Envelope& envelope, std::uint8_t* bytes);

/// Reads the envelope of a complete packet. False, with a text in `error`, when the packet does not have this format.
bool unpackEnvelope(const std::uint8_t* packet, std::size_t length, Envelope& envelope, std::string& error);

}  // namespace host
