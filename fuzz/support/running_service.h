// The reference service with all rooms, without a process: browsers send messages on the wire, the operator sends
// lines, and the broadcast is the sample or the input's own.
// Threads: one.
// Blocks:  never.
// Fails:   never.
#pragma once

#include "broadcast_input.h"
#include "browserdvbservice_stub.h"
#include "oracles.h"
#include "rooms.h"
#include "scheduler.h"
#include "wire.h"

namespace fuzz {

/// Two seconds of the sample, as packets one behind the other.
inline const std::vector<std::uint8_t>& samplePackets() {
    static const std::vector<std::uint8_t> kPackets = [] {
        std::vector<std::uint8_t> packets;
        tsmake::writeMultiplex(tsmake::sampleMultiplex(), 2, [&packets](const std::uint8_t* packet) {
            packets.insert(packets.end(), packet, packet + broadcast::kPacketSize);
        });
        return packets;
    }();
    return kPackets;
}

class RunningService {
public:
    RunningService() {
        stub.setLmqIOModule(wire::newService());
        dtvservice::addRooms(core, {"serial number"});
        core.browsers.connect(stub);
        multiplex = &core.addMultiplex();
        multiplex->report.setSource("sample.ts");
    }

    void join(dtvservice::Browser browser) {
        frame::TransportInfo peer;
        peer.peer = browser;
        stub.onIOConnectionConnected(peer);
        runTasks();
    }
    void leave(dtvservice::Browser browser) {
        frame::TransportInfo peer;
        peer.peer = browser;
        stub.onIOConnectionDisconnected(peer);
        runTasks();
    }
    /// A message of the browser; one that does not fit its table is dropped.
    void command(dtvservice::Browser browser, std::size_t place, const std::vector<std::uint8_t>& image) {
        wire::deliver(place, browser, image);
        runTasks();
    }
    /// The answer to a line of the operator.
    std::string ask(const std::string& line) {
        std::string answer = core.requests.answer(line);
        runTasks();
        expectJson(answer, "answer to the operator");
        return answer;
    }
    /// The next packets of the sample, not more than those of two seconds in all.
    void playSample(std::size_t packets) {
        const std::vector<std::uint8_t>& all = samplePackets();
        for (; packets > 0 && played < all.size(); --packets, played += broadcast::kPacketSize) {
            multiplex->demux.feed(broadcast::TsPacket{all.data() + played});
        }
        runTasks();
    }
    broadcast::Demux& demux() { return multiplex->demux; }
    void runTasks() { loop.runUntil(dtvservice::EventLoop::Clock::now()); }

private:
    dtvservice::EventLoop loop;
    dtvservice::Core core{loop};
    lo::browserdvbservice::ServiceStub stub{core.commands};
    dtvservice::Multiplex* multiplex = nullptr;
    std::size_t played = 0;  // bytes of the sample
};

}  // namespace fuzz
