// Player: plays a file into the demultiplexer, at the pace of its PCR, again and again.
// Threads: the loop's.   Blocks: until the file has ended or the loop is stopped.
#pragma once

#include "demux.h"
#include "event_loop.h"
#include "packet_file.h"

namespace dtvservice {

enum class Repeat { once, forever };

/// Plays until the end or until the loop is stopped. Commands are handled between packets.
void play(broadcast::PacketFile& file, broadcast::Demux& demux, EventLoop& loop, Repeat repeat);

/// Reads the whole file as fast as it goes, without handling commands.
void scan(broadcast::PacketFile& file, broadcast::Demux& demux);

}  // namespace dtvservice
