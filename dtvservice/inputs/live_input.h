// LiveInput: plays standard input, datagrams or a DVB adapter into a demultiplexer. Standard input is played at the
// pace of its PCR, the others as their packets arrive. The constructor opens the source: nothing that is sent later is
// missed. A source that fails is opened again every second.
// Threads: one of its own; packets are posted to the loop.
// Blocks:  the destructor, shortly.
// Fails:   never; errors are logged, and are in the input's report.
#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "demux.h"
#include "event_loop.h"
#include "input_name.h"
#include "input_report.h"
#include "packet_reader.h"
#include "repeated_messages.h"

namespace dtvservice {

class LiveInput {
public:
    /// The maximum number of packets that wait for the loop: about a second of a full satellite transponder.
    static constexpr std::size_t kMostUnderWay = 32768;

    /// The demultiplexer and the report must live as long as the loop runs. `newBitRate`: of packets that follow no
    /// PCR, if the input is paced.
    LiveInput(InputName newInput, EventLoop& newLoop, broadcast::Demux& newDemux, InputReport& newReport,
              std::uint64_t newBitRate);
    LiveInput(const LiveInput&) = delete;
    LiveInput& operator=(const LiveInput&) = delete;
    ~LiveInput();

private:
    void open();
    void tell(const std::string& problem);
    void run();
    bool playToItsEnd();
    void playFrom(PacketReader& reader);
    bool waitUntil(EventLoop::Clock::time_point time) const;
    void handOver(std::vector<std::uint8_t>& batch);

    InputName input;
    EventLoop& loop;
    broadcast::Demux& demux;
    InputReport& report;
    std::uint64_t bitRate;
    // Packets that are posted to the loop but not yet played. Counts packets, because batches differ in size: a
    // datagram usually has seven packets.
    std::shared_ptr<std::atomic<std::size_t>> underWay = std::make_shared<std::atomic<std::size_t>>(0);
    std::unique_ptr<ByteSource> source;  // constructor, then the thread
    RepeatedMessages messages;
    int wakeUp;  // an eventfd; the destructor writes to it to end the thread
    std::thread thread;
};

}  // namespace dtvservice
