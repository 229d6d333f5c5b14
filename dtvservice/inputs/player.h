// Player: plays files into demultiplexers at the pace of their PCR, in a loop.
// Threads: the loop's.
// Blocks:  play() until all files have ended or the loop is stopped.
// Fails:   a read error is logged, and the file starts again. A file that cannot be opened, or no longer has packets, is
//          opened again every second. A file that has been replaced is opened anew at its end.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "demux.h"
#include "event_loop.h"
#include "input_report.h"
#include "pacer.h"
#include "packet_file.h"
#include "repeated_messages.h"

namespace dtvservice {

enum class Repeat { once, forever };

struct Playing {
    Repeat repeat = Repeat::forever;
    std::uint64_t bitRate = Pacer::kDefaultBitRate;  ///< of packets that follow no PCR
};

/// Plays one file into a demultiplexer, which must outlive the playback, as the report must.
class Playback {
public:
    /// If `newFile` is null, the path is opened later, or never with Repeat::once.
    Playback(std::string newPath, std::unique_ptr<PacketFile> newFile, broadcast::Demux& newDemux,
             InputReport& newReport, const Playing& playing);

    /// When to call feed() next; nothing if the file has ended for good.
    std::optional<EventLoop::Clock::time_point> due();
    /// Does the next step: feeds the packet that is due, continues a search, restarts the file, or tries to open it.
    void feed();

private:
    void open();
    void use(std::unique_ptr<PacketFile> newFile);
    void close(const std::string& problem);
    void endRound();
    void startRound();

    std::string path;
    std::unique_ptr<PacketFile> file;
    broadcast::Demux& demux;
    InputReport& report;
    Repeat repeat;
    Pacer pacer;
    RepeatedMessages messages;
    const std::uint8_t* packet = nullptr;  // the next packet to feed
    EventLoop::Clock::time_point dueAt;    // when to do the next step
    EventLoop::Clock::time_point roundBegin = EventLoop::Clock::now();
    bool hasPackets = false;  // in this round
    enum class State { closed, reading, packetDue, searching, roundDue, ended } state;
};

/// Plays until the loop is stopped. Without live inputs it also ends when all files have ended. The loop handles
/// commands between packets.
enum class Others { none, live };
void play(std::vector<Playback>& playbacks, EventLoop& loop, Others others);

}  // namespace dtvservice
