// ServiceStream: picks one service's packets from those of its multiplex: the PMT, the components and the PCR as they
// are, and in place of the PAT one that lists this service alone.
// Threads: one.
// Blocks:  never.
// Fails:   never; without a service nothing comes.
#pragma once

#include <array>
#include <bitset>
#include <functional>
#include <optional>

#include "channel.h"
#include "ts_packet.h"

namespace dtvservice {

class ServiceStream {
public:
    /// A packet of the stream. `isPat`: a receiver may begin here.
    using Sink = std::function<void(const std::uint8_t* packet, bool isPat)>;

    explicit ServiceStream(Sink newSink) : sink(std::move(newSink)) {}

    /// From the next PAT on, the packets of this service, without its streams until setStreams(). Nothing changes if it
    /// is presented already.
    void present(const broadcast::Channel& channel);
    /// From now on these components, and no others.
    void setStreams(const si::Pmt& pmt);
    /// Nothing comes until a service is presented.
    void clear() { presented.reset(); }

    void feed(broadcast::TsPacket packet);

private:
    struct Program {
        std::uint16_t transportStreamId;
        std::uint16_t serviceId;
        std::uint16_t pmtPid;

        bool operator==(const Program& other) const {
            return transportStreamId == other.transportStreamId && serviceId == other.serviceId &&
                   pmtPid == other.pmtPid;
        }
    };

    void makePat();
    void sendPat();

    Sink sink;
    std::optional<Program> presented;
    bool hasPat = false;  // of the presented service; nothing is sent before it
    std::bitset<broadcast::kPidCount> streams;
    std::array<std::uint8_t, broadcast::kPacketSize> pat{};
    std::uint8_t patVersion = 0;
    std::uint8_t patCounter = 0;
};

}  // namespace dtvservice
