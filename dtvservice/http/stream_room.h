// StreamRoom: gives the presented service's packets to the readers of the HTTP server, as they are broadcast.
// Threads: the loop's.
// Blocks:  never: a reader that is slow loses packets, which are counted and logged.
// Fails:   never.
#pragma once

#include <memory>
#include <vector>

#include "core.h"
#include "packet_queue.h"
#include "service_stream.h"

namespace dtvservice {

class StreamRoom : public Room {
public:
    explicit StreamRoom(Core& newCore);
    ~StreamRoom() override;

    /// The reader gets packets from the next PAT on, until its queue has ended.
    void join(std::shared_ptr<PacketQueue> reader);

    void multiplexReceived(Multiplex& multiplex) override;
    void channelListChanged(Multiplex& multiplex) override;
    void servicePresented(const broadcast::Channel& channel) override;
    void serviceGone() override;
    void pmtChanged(const broadcast::Channel& channel, const broadcast::Section& section, bool changed) override;

private:
    struct Reader {
        std::shared_ptr<PacketQueue> queue;
        bool hasBegun = false;
    };

    void follow(const broadcast::Channel& channel);
    void setStreams(const broadcast::Channel& channel);
    void listen();
    void rest();
    void deliver(const std::uint8_t* packet, bool isPat);
    bool give(Reader& reader, const std::uint8_t* packet, bool isPat);
    nlohmann::json count(const nlohmann::json& request);

    Core& core;
    broadcast::Demux* demux = nullptr;
    ServiceStream stream;
    std::uint16_t pmtPid = 0;
    std::vector<Reader> readers;
    std::uint64_t dropped = 0;
    RepeatedMessages messages;
};

}  // namespace dtvservice
