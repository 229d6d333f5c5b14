// LiveInput: an input that comes by itself, on its way into a demultiplexer. Standard input is played at the pace of
// its PCR; datagrams are taken as they come. What fails is opened again every second. Threads: one of its own; packets
// are handed over on the loop's.   Blocks: its end, shortly. Fails:   never: what is wrong is told in the log, once for
// each cause.
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
    /// The demultiplexer must live as long as the loop runs.
    LiveInput(InputName newInput, EventLoop& newLoop, broadcast::Demux& newDemux);
    LiveInput(const LiveInput&) = delete;
    LiveInput& operator=(const LiveInput&) = delete;
    ~LiveInput();

private:
    void run();
    void playFrom(broadcast::PacketReader& reader);
    bool waitUntil(EventLoop::Clock::time_point time) const;
    void handOver(std::vector<std::uint8_t>& batch);

    InputName input;
    EventLoop& loop;
    broadcast::Demux& demux;
    std::shared_ptr<std::atomic<int>> underWay = std::make_shared<std::atomic<int>>(0);  // batches that are posted
    std::uint64_t dropped = 0;
    EventLoop::Clock::time_point lastLine;
    int wakeUp;  // an eventfd: written once, at the end
    std::thread thread;
};

}  // namespace dtvservice
