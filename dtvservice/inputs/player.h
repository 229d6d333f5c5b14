// Player: plays files into demultiplexers, each at the pace of its PCR, again and again.
// Threads: the loop's.
// Blocks:  play() until all files have ended or the loop is stopped.
// Fails:   a read error is told in the log; the file then begins again. One that cannot be opened is tried again every
//          second.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "demux.h"
#include "event_loop.h"
#include "pacer.h"
#include "packet_file.h"

namespace dtvservice {

enum class Repeat { once, forever };

/// One file on its way into a demultiplexer, which must outlive it.
class Playback {
public:
    /// Without a file, the path is opened later. Played once, that is the end.
    Playback(std::string newPath, std::unique_ptr<PacketFile> newFile, broadcast::Demux& newDemux, Repeat newRepeat);

    /// When feed() is to be called next; none once the file has ended for good.
    std::optional<EventLoop::Clock::time_point> due();
    /// Hands over the packet that is due, or looks on for one, or begins the file again, or tries to open it.
    void feed();

private:
    void open();

    std::string path;
    std::unique_ptr<PacketFile> file;
    broadcast::Demux& demux;
    Repeat repeat;
    Pacer pacer;
    const std::uint8_t* packet = nullptr;  // the one that is due
    EventLoop::Clock::time_point dueAt;    // of the packet, or of the next round
    EventLoop::Clock::time_point roundBegin = EventLoop::Clock::now();
    enum class State { closed, reading, packetDue, searching, roundDue, ended } state;
};

/// Plays until all have ended, where nothing else keeps the loop busy, or until the loop is stopped. Commands are
/// handled between packets.
enum class Others { none, live };
void play(std::vector<Playback>& playbacks, EventLoop& loop, Others others);

/// Reads the whole file as fast as it goes, without handling commands.
void scan(PacketFile& file, broadcast::Demux& demux);

}  // namespace dtvservice
