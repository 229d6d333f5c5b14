// The envelope: what stands before a record's image in a packet on the socket. All words in network byte order.
//
//    0        4        8        12       16   17       20       24       28
//    +--------+--------+--------+--------+----+--------+--------+--------+-- - -
//    | "DTV1" | first  | inter- | message|dir.| zero   | trans- | image  | image
//    |        | word   | face id| id     |    |        | action | length |
//    +--------+--------+--------+--------+----+--------+--------+--------+-- - -
//
// Threads: any.
// Blocks:  never.
// Fails:   with a text that says what was wrong.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "frame/message.h"

namespace host {

constexpr std::size_t kEnvelopeSize = 28;

struct Envelope {
    frame::MsgMeta header;
    std::uint32_t transaction = frame::kAnyId;
    std::uint32_t imageLength = 0;
};

std::array<std::uint8_t, kEnvelopeSize> packEnvelope(const Envelope& envelope);

/// Reads the envelope of a whole packet; false, and `error` filled, when the packet is not one of ours.
bool unpackEnvelope(const std::uint8_t* packet, std::size_t length, Envelope& envelope, std::string& error);

}  // namespace host
