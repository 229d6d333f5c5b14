// PresentationRoom: selects the presented service on request of browsers and of the operator, and when the broadcast
// changes. Sends browsers its PMT and its EIT present/following.
// Threads: the loop's.
// Blocks:  never.
// Fails:   a failed tune is logged, and the browser that asked gets an event. The operator gets the reason.
#pragma once

#include "core.h"

namespace dtvservice {

class PresentationRoom : public Room {
public:
    explicit PresentationRoom(Core& newCore);

    void channelListChanged(Multiplex& multiplex) override;
    void pmtArrived(Multiplex& multiplex, std::uint16_t serviceId, const broadcast::Section& section) override;
    void pmtChanged(const broadcast::Channel& channel, const broadcast::Section& section, bool changed) override;
    void eitChanged(const broadcast::Channel& channel, const broadcast::Section& section, bool changed) override;
    void tell(Part part, const broadcast::Channel& channel, const Audience& to) override;
    void browserConnected(Browser browser) override;

private:
    void cmdTuneToService(Browser asker, const lo::browserdvbservice::TuneInfoChannel& wanted);
    void cmdTriggerServiceInfoAcquire(Browser asker);
    void cmdSendPMTCache(Browser asker);
    void cmdDtvInfoRequest(Browser asker);
    bool tune(Browser asker, const lo::browserdvbservice::TuneInfoChannel& wanted);
    bool tuneByDescriptor(Browser asker, const lo::browserdvbservice::TuneInfoChannel& wanted);
    void present(Multiplex& multiplex, const broadcast::Channel& channel);
    void presentFirst(Multiplex& multiplex);
    void tellServiceInfo(Browser browser);
    void tellPmt(const broadcast::Channel& channel, const broadcast::Section& section, bool changed,
                 const Audience& to);

    Multiplexes::Found findListed(const Triplet& wanted) const;
    nlohmann::json tuneAsOperated(const nlohmann::json& request);
    nlohmann::json describe(const nlohmann::json& request);

    Core& core;
    std::string toldTriplet;  // the presented service's triplet that browsers have received
};

}  // namespace dtvservice
