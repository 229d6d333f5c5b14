// LiveInput: an input that comes by itself, on its way into a demultiplexer. Standard input is played at the pace of
// its PCR; datagrams are taken as they come. What fails is opened again every second.
// Threads: one of its own; packets are handed over on the loop's.
// Blocks:  its end, shortly.
// Fails:   never: what is wrong is told in the log, once for each cause.
#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "demux.h"
#include "event_loop.h"
#include "input_name.h"
#include "packet_reader.h"

namespace dtvservice {

class LiveInput {
public:
    /// What may wait for the loop: about a second of a full satellite transponder.
    static constexpr std::size_t kMostUnderWay = 32768;

    /// The demultiplexer must live as long as the loop runs.
    LiveInput(InputName newInput, EventLoop& newLoop, broadcast::Demux& newDemux);
    LiveInput(const LiveInput&) = delete;
    LiveInput& operator=(const LiveInput&) = delete;
    ~LiveInput();

private:
    void run();
    void playFrom(PacketReader& reader);
    bool waitUntil(EventLoop::Clock::time_point time) const;
    void handOver(std::vector<std::uint8_t>& batch);

    InputName input;
    EventLoop& loop;
    broadcast::Demux& demux;
    // Packets that are posted and not taken yet. A batch of them may be of any size: a datagram has seven.
    std::shared_ptr<std::atomic<std::size_t>> underWay = std::make_shared<std::atomic<std::size_t>>(0);
    std::uint64_t dropped = 0;
    EventLoop::Clock::time_point lastLine;
    int wakeUp;  // an eventfd: written once, at the end
    std::thread thread;
};

}  // namespace dtvservice
