// ServiceFaults: does the steps of scenarios to the service. A request is done as if an operator sent it; a fault lasts
// until it is undone.
// Threads: the loop's.
// Blocks:  begin() while a service is frozen, or its transport stops.
// Fails:   begin() gives the reason.
#pragma once

#include <map>
#include <set>

#include "core.h"
#include "disturbed_events.h"
#include "message_faults.h"
#include "packet_faults.h"
#include "scenario_runner.h"

namespace dtvservice {

/// Ends the service's connections to browsers, and takes new ones again.
struct Transport {
    std::function<void()> stop;
    std::function<bool()> start;  ///< false if it could not; the log says why
};

class ServiceFaults : public StepActions {
public:
    /// The core must outlive this object. Without a transport no service can be stopped. `newOver` is called when a
    /// fault has ended by itself.
    ServiceFaults(Core& newCore, Transport newTransport, MessageFaults::Over newOver);

    std::string begin(const Step& step, std::uint32_t asker, FaultId id) override;
    void undo(FaultId id) override;
    void undoAll() override;

    /// Whether the command is to be handled.
    bool letsPass(Browser asker, std::uint32_t command);

private:
    struct Asked {
        const nlohmann::json& values;
        const std::string& name;
        Browser asker;
        FaultId id;
    };

    std::string request(const Asked& asked);
    std::string loseSignal(const Asked& asked);
    std::string addPackets(const Asked& asked, PacketFaults::Kind kind);
    std::string addMessages(const Asked& asked, MessageFaults::Kind kind);
    std::string stopService(const Asked& asked);
    std::string freeze(const Asked& asked);
    std::string disconnect(const Asked& asked);
    std::string undoNamed(const Asked& asked);
    std::string begin(const Asked& asked);

    bool setPacketFault(const nlohmann::json& values, const PacketFaults::Fault& fault);
    void undoPackets(FaultId id);
    void restoreSignal(FaultId id);
    void startTransport();
    static Browser browserOf(const Asked& asked);

    Core& core;
    Transport transport;
    MessageFaults::Over over;
    MessageFaults messages;
    DisturbedEvents events;
    std::map<const Multiplex*, PacketFaults> packets;
    std::map<FaultId, std::set<Multiplex*>> signals;  // lost
    std::map<FaultId, std::string> lasting;           // faults by name
    std::set<FaultId> stops;                          // of the transport
    bool isStopped = false;                           // the transport
    bool hasFailed = false;                           // to start again
};

}  // namespace dtvservice
