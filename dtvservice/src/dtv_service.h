// DtvService: the reference DTV service over one multiplex: which service is presented, what browsers are told of it,
// and what it does with their commands. Threads: commands arrive on the transport thread and are posted to the loop;
// everything else runs on the loop's thread. Blocks:  never.   Locks: none of its own. Fails:   a command that cannot
// be done is told in the log; a tune that fails also by onServiceChanged.
#pragma once

#include <optional>

#include "browserdvbservice_stub.h"
#include "event_loop.h"
#include "refusing_handler.h"
#include "section_filters.h"
#include "si_database.h"

namespace dtvservice {

class DtvService : public RefusingHandler, private broadcast::SiListener {
public:
    /// The loop and the demultiplexer must outlive the service.
    DtvService(EventLoop& newLoop, broadcast::Demux& demux);

    /// Events leave through the stub from now on. Before that they are dropped.
    void connect(lo::browserdvbservice::ClientInterface& newEvents) { events = &newEvents; }
    const broadcast::SiDatabase& database() const { return si; }

    int cmdTuneToService(frame::MsgIds& ids, const frame::TransportInfo& transport,
                         const lo::browserdvbservice::TuneInfoChannel& channel) override;
    int cmdSetAudioSource(frame::MsgIds& ids, const frame::TransportInfo& transport, unsigned int session,
                          const std::string& source) override;
    int cmdTriggerServiceInfoAcquire(frame::MsgIds& ids, const frame::TransportInfo& transport) override;
    int cmdSendPMTCache(frame::MsgIds& ids, const frame::TransportInfo& transport) override;
    int cmdTriggerAitReparse(frame::MsgIds& ids, const frame::TransportInfo& transport) override;
    int cmdUpdateIPCChannelNames(frame::MsgIds& ids, const frame::TransportInfo& transport,
                                 const std::string& sectionDataChannel, const std::string& unusedChannel,
                                 const std::string& secondChannel) override;
    int cmdFilterOpen(frame::MsgIds& ids, const frame::TransportInfo& transport, const std::string& session,
                      unsigned int pid, const lo::browserdvbservice::OpenFilterMatchMask_t& matchMask) override;
    int cmdFilterClose(frame::MsgIds& ids, const frame::TransportInfo& transport, const std::string& session) override;
    int cmdStartPMTRequest(frame::MsgIds& ids, const frame::TransportInfo& transport, const std::string& session,
                           unsigned int serviceId) override;
    int cmdStopPMTRequest(frame::MsgIds& ids, const frame::TransportInfo& transport,
                          const std::string& session) override;
    int cmdDataReadFinished(frame::MsgIds& ids, const frame::TransportInfo& transport, const std::string& session,
                            const std::string& dataSlot) override;
    void browserConnected(const frame::TransportInfo& peer) override;
    void browserDisconnected(const frame::TransportInfo& peer) override;

private:
    void onChannelList() override;
    void onPmt(std::uint16_t serviceId, const broadcast::Section& section, bool changed) override;
    void onEit(std::uint16_t serviceId, const broadcast::Section& section, bool changed) override;
    void onAit(std::uint16_t serviceId, const broadcast::Section& section, bool changed) override;

    const broadcast::Channel* presentedChannel() const;
    bool isPresented(std::uint16_t serviceId) const;
    void tune(frame::MsgIds asker, const lo::browserdvbservice::TuneInfoChannel& wanted);
    void present(const broadcast::Channel& channel);
    void tellServiceInfo(frame::MsgIds ids);
    void tellPmt(frame::MsgIds ids, const broadcast::Channel& channel, const broadcast::Section& section, bool changed);
    void tellAitChannel(frame::MsgIds ids, const broadcast::Channel& channel);
    void tellAit(frame::MsgIds ids, const broadcast::Channel& channel);

    EventLoop& loop;
    lo::browserdvbservice::ClientInterface* events = nullptr;
    broadcast::SiDatabase si;
    SectionFilters filters;
    std::optional<std::uint16_t> presented;  // service_id
    std::string toldTriplet;                 // of the presented service, as browsers know it
};

}  // namespace dtvservice
