// DtvService: the reference DTV service over one or more multiplexes: which service is presented, what browsers are
// told of it, and what it does with their commands. Threads: commands arrive on the transport thread and are posted to
// the loop; everything else runs on the loop's thread. Blocks:  never.   Locks: none of its own. Fails:   a command
// that cannot be done is told in the log; a tune that fails also by onServiceChanged.
#pragma once

#include <deque>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <set>

#include "addressing.h"
#include "browserdvbservice_stub.h"
#include "drm_messages.h"
#include "event_loop.h"
#include "osd_followers.h"
#include "presented_components.h"
#include "section_filters.h"
#include "service_log.h"
#include "si_database.h"
#include "stream_event_listeners.h"
#include "timelines.h"

namespace dtvservice {

class DtvService : public lo::browserdvbservice::CommandHandler, private broadcast::SiListener {
public:
    /// The loop must outlive the service.
    explicit DtvService(EventLoop& newLoop);

    /// One more multiplex. Its packets go into the demultiplexer that is given back, on the loop's thread.
    broadcast::Demux& addMultiplex();
    /// Events leave through the stub from now on. Before that they are dropped.
    void setSerialNumber(const std::string& text) { serialNumber = text; }
    void connect(lo::browserdvbservice::ClientInterface& newEvents) { events = &newEvents; }

    int cmdTuneToService(frame::MsgIds& ids, const frame::TransportInfo& transport,
                         const lo::browserdvbservice::TuneInfoChannel& channel) override;
    int cmdSetAudioSource(frame::MsgIds& ids, const frame::TransportInfo& transport, unsigned int session,
                          const std::string& source) override;
    int cmdTriggerServiceInfoAcquire(frame::MsgIds& ids, const frame::TransportInfo& transport) override;
    int cmdSendPMTCache(frame::MsgIds& ids, const frame::TransportInfo& transport) override;
    int cmdTriggerAitReparse(frame::MsgIds& ids, const frame::TransportInfo& transport) override;
    int cmdTuneToComponent(frame::MsgIds& ids, const frame::TransportInfo& transport,
                           const lo::browserdvbservice::TuneInfoComponent& component) override;
    int cmdSelectComponent(frame::MsgIds& ids, const frame::TransportInfo& transport,
                           lo::browserdvbservice::ComponentType type) override;
    int cmdUnselectComponent(frame::MsgIds& ids, const frame::TransportInfo& transport,
                             lo::browserdvbservice::ComponentType type) override;
    int cmdSendPtsRequest(frame::MsgIds& ids, const frame::TransportInfo& transport, unsigned int request) override;
    int cmdStartTemiTimelineRequest(frame::MsgIds& ids, const frame::TransportInfo& transport,
                                    unsigned int componentTag, unsigned int timelineId, unsigned int third) override;
    int cmdStopTemiTimelineRequest(frame::MsgIds& ids, const frame::TransportInfo& transport) override;
    int cmdHandleHbbtvStatus(frame::MsgIds& ids, const frame::TransportInfo& transport, int status) override;
    int cmdSendOpAppInstallStatus(frame::MsgIds& ids, const frame::TransportInfo& transport,
                                  lo::browserdvbservice::OpappType type,
                                  lo::browserdvbservice::OpappInstallStatus status) override;
    int cmdMountDsmcc(frame::MsgIds& ids, const frame::TransportInfo& transport, unsigned int request,
                      unsigned short onid, unsigned short tsid, unsigned short sid, short componentTag) override;
    int cmdVodGetMaxdomeSecureSerialNumber(frame::MsgIds& ids, const frame::TransportInfo& transport,
                                           const std::string& request) override;
    int cmdDtvInfoRequest(frame::MsgIds& ids, const frame::TransportInfo& transport) override;
    int cmdAddStreamEventListener(frame::MsgIds& ids, const frame::TransportInfo& transport, unsigned int request,
                                  unsigned short onid, unsigned short tsid, unsigned short sid, short componentTag,
                                  const std::string& objectPath, const std::string& eventName) override;
    int cmdRemoveStreamEventListener(frame::MsgIds& ids, const frame::TransportInfo& transport, unsigned int request,
                                     unsigned short onid, unsigned short tsid, unsigned short sid, short componentTag,
                                     const std::string& objectPath, const std::string& eventName) override;
    int cmdStartOSDDetection(frame::MsgIds& ids, const frame::TransportInfo& transport, unsigned int layer) override;
    int cmdStopOSDDetection(frame::MsgIds& ids, const frame::TransportInfo& transport, unsigned int layer) override;
    int cmdSendDrmMessage(frame::MsgIds& ids, const frame::TransportInfo& transport, unsigned long long session,
                          unsigned short caSystemId, unsigned short second, const std::string& type,
                          const std::string& message) override;
    int cmdCaDrmRequestConnect(frame::MsgIds& ids, const frame::TransportInfo& transport,
                               unsigned long long session) override;
    int cmdCaDrmRequestDisconnect(frame::MsgIds& ids, const frame::TransportInfo& transport,
                                  unsigned short slot) override;
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

    /// An operator's request, a line of JSON; its answer, another. On the loop's thread, once connected.
    std::string operate(const std::string& request);

private:
    struct Multiplex {
        explicit Multiplex(broadcast::SiListener& listener) : si(demux, listener) {}
        broadcast::Demux demux;
        broadcast::SiDatabase si;
    };

    void onChannelList(const broadcast::SiDatabase& of) override;
    void onPmt(const broadcast::SiDatabase& of, std::uint16_t serviceId, const broadcast::Section& section,
               bool changed) override;
    void onEit(const broadcast::SiDatabase& of, std::uint16_t serviceId, const broadcast::Section& section,
               bool changed) override;
    void onAit(const broadcast::SiDatabase& of, std::uint16_t serviceId, const broadcast::Section& section,
               bool changed) override;

    void onAitSignalled(const broadcast::SiDatabase& of, std::uint16_t serviceId, bool signalled) override;

    /// Once for each browser that the loop knows. One that has just connected, and that the loop has not heard of, is
    /// told what it needs first when it has.
    template <typename Tell>
    void toEveryone(Tell tell) {
        for (const std::uint32_t browser : browsers) {
            tell(only(browser));
        }
    }
    static unsigned short networkOf(const broadcast::Channel& channel);
    const broadcast::Channel* presentedChannel() const;
    bool isReceived(const broadcast::Channel& channel) const;
    std::vector<broadcast::Channel> channelsWithoutInput() const;
    std::string whyNotReceived(const std::string& triplet) const;
    bool isPresented(const broadcast::SiDatabase& of, std::uint16_t serviceId) const;
    Multiplex* multiplexOf(const broadcast::SiDatabase& si);
    void follow(Multiplex& multiplex);
    void tune(frame::MsgIds asker, const lo::browserdvbservice::TuneInfoChannel& wanted);
    void present(Multiplex& multiplex, const broadcast::Channel& channel);
    void presentFirst(const broadcast::SiDatabase& of);
    bool tuneByDescriptor(const lo::browserdvbservice::TuneInfoChannel& wanted);
    enum class Components { ofTheSameService, ofAnotherService };
    si::Descriptors presentEvent(const broadcast::Channel& channel) const;
    void followStreamEvents(const broadcast::Channel& channel);
    void updateComponents(const broadcast::Channel& channel, Components as);
    void tellComponent(frame::MsgIds ids, const si::Component& component);
    void tellSelected(si::ComponentType type);
    void tellPts(std::uint32_t browser, std::uint64_t pts, std::uint64_t pcrBase);
    void tellTimeline(std::uint32_t browser, std::uint8_t componentTag, const broadcast::TemiTimeline& timeline,
                      std::uint64_t pts);
    void tellStreamEvent(std::uint32_t browser, const StreamEventListeners::Target& target,
                         const si::StreamEvent& event);
    void tellAitState(frame::MsgIds ids, const broadcast::Channel& channel);
    void tellServiceInfo(frame::MsgIds ids);
    void tellPmt(frame::MsgIds ids, const broadcast::Channel& channel, const broadcast::Section& section, bool changed);
    void tellAitChannel(frame::MsgIds ids, const broadcast::Channel& channel);
    void tellAitSection(frame::MsgIds ids, const broadcast::Section& section);
    void tellAit(frame::MsgIds ids, const broadcast::Channel& channel);

    nlohmann::json operate(const std::string& command, const nlohmann::json& request);
    nlohmann::json operateChannels(const nlohmann::json& request);
    nlohmann::json operateStatus(const nlohmann::json& request);
    nlohmann::json operateStatistics(const nlohmann::json& request);
    nlohmann::json operateTune(const nlohmann::json& request);
    nlohmann::json operateOsd(const nlohmann::json& request);
    nlohmann::json operateCaInsert(const nlohmann::json& request);
    nlohmann::json operateCaRemove(const nlohmann::json& request);
    nlohmann::json operateCaReply(const nlohmann::json& request);
    nlohmann::json operateEngine(const nlohmann::json& request);
    nlohmann::json operateStopTerminals(const nlohmann::json& request);
    nlohmann::json setCaSlot(unsigned short slot, bool inserted);
    void forgetOperated(std::uint32_t browser);

    EventLoop& loop;
    lo::browserdvbservice::ClientInterface* events = nullptr;
    std::deque<Multiplex> multiplexes;
    Multiplex* current = nullptr;  // the one that is received, as with one tuner: the first until a tune says otherwise
    SectionFilters filters;
    PresentedComponents shown;
    Timelines timelines;
    StreamEventListeners streamEvents;
    std::string serialNumber;
    OsdFollowers osdFollowers;
    std::set<unsigned int> osdLayers;  // those that are shown
    std::set<unsigned short> caSlots;  // those with a module
    DrmMessages drmMessages;
    std::set<std::uint32_t> browsers;        // connected
    std::optional<std::uint16_t> presented;  // service_id, in the current multiplex
    std::string toldTriplet;                 // of the presented service, as browsers know it
};

}  // namespace dtvservice
