// Commands and events of what is presented: components, time, and what is merely noted.
#include "dtv_service.h"

namespace dtvservice {

using lo::browserdvbservice::ComponentType;
using lo::browserdvbservice::TuneInfoComponent;

namespace {

constexpr std::uint32_t kNoIndex = 0xFFFFFFFF;
constexpr std::uint16_t kNoTag = 0xFFFF;
constexpr int kFirst = 0;
constexpr std::uint32_t kTypes = 3;

std::uint16_t tagOf(const si::Component& component) {
    if (!component.tag) {
        return kNoTag;
    }
    return *component.tag;
}

/// The three letters of a language, the first in the highest of the low 24 bits; 0 for none.
std::uint32_t languageCode(const std::string& language) {
    std::uint32_t code = 0;
    for (const char letter : language) {
        code = code << 8U | static_cast<std::uint8_t>(letter);
    }
    return code;
}

}  // namespace

int DtvService::cmdTuneToComponent(frame::MsgIds&, const frame::TransportInfo&, const TuneInfoComponent& component) {
    loop.post([this, type = component.first, pid = component.second] {
        if (type >= kTypes || !shown.selectPid(static_cast<si::ComponentType>(type), pid)) {
            BLOG_TAGGED_AS(blog::kUnsupported, "cmdTuneToComponent", "no component of type %u on PID %u\n", type, pid);
            return;
        }
        tellSelected(static_cast<si::ComponentType>(type));
    });
    return 0;
}

int DtvService::cmdSelectComponent(frame::MsgIds&, const frame::TransportInfo&, ComponentType type) {
    loop.post([this, type = static_cast<std::uint32_t>(type)] {
        if (type >= kTypes || !shown.select(static_cast<si::ComponentType>(type))) {
            BLOG_TAGGED_AS(blog::kUnsupported, "cmdSelectComponent", "no component of type %u\n", type);
            return;
        }
        tellSelected(static_cast<si::ComponentType>(type));
    });
    return 0;
}

int DtvService::cmdUnselectComponent(frame::MsgIds&, const frame::TransportInfo&, ComponentType type) {
    loop.post([this, type = static_cast<std::uint32_t>(type)] {
        if (type >= kTypes) {
            BLOG_TAGGED_AS(blog::kUnsupported, "cmdUnselectComponent", "no component of type %u\n", type);
            return;
        }
        shown.unselect(static_cast<si::ComponentType>(type));
        tellSelected(static_cast<si::ComponentType>(type));
    });
    return 0;
}

int DtvService::cmdSendPtsRequest(frame::MsgIds& ids, const frame::TransportInfo&, unsigned int) {
    loop.post([this, browser = ids.peer] { timelines.requestPts(browser); });
    return 0;
}

int DtvService::cmdStartTemiTimelineRequest(frame::MsgIds& ids, const frame::TransportInfo&, unsigned int componentTag,
                                            unsigned int timelineId, unsigned int) {
    constexpr unsigned int kLargest = 0xFF;
    if (componentTag > kLargest || timelineId > kLargest) {
        BLOG_TAGGED(blog::kUnsupported, "refused: component_tag %u, timeline_id %u: each is 0 to 255\n", componentTag,
                    timelineId);
        return -1;
    }
    loop.post([this, browser = ids.peer, tag = static_cast<std::uint8_t>(componentTag),
               id = static_cast<std::uint8_t>(timelineId)] { timelines.startTimeline(browser, tag, id); });
    return 0;
}

int DtvService::cmdStopTemiTimelineRequest(frame::MsgIds& ids, const frame::TransportInfo&) {
    loop.post([this, browser = ids.peer] { timelines.stopTimelines(browser); });
    return 0;
}

int DtvService::cmdHandleHbbtvStatus(frame::MsgIds& ids, const frame::TransportInfo&, int status) {
    BLOG_TAGGED(blog::kOrdinary, "browser %u: application start status %d\n", ids.peer, status);
    return 0;
}

int DtvService::cmdSendOpAppInstallStatus(frame::MsgIds& ids, const frame::TransportInfo&,
                                          lo::browserdvbservice::OpappType type,
                                          lo::browserdvbservice::OpappInstallStatus status) {
    BLOG_TAGGED(blog::kOrdinary, "browser %u: operator application of type %d, install status %d\n", ids.peer,
                static_cast<int>(type), static_cast<int>(status));
    return 0;
}

int DtvService::cmdAddStreamEventListener(frame::MsgIds& ids, const frame::TransportInfo&, unsigned int request,
                                          unsigned short onid, unsigned short tsid, unsigned short sid,
                                          short componentTag, const std::string& objectPath,
                                          const std::string& eventName) {
    loop.post([=]() mutable {
        const StreamEventListeners::Target target = {onid, tsid, sid, componentTag, objectPath, eventName};
        streamEvents.add(ids.peer, target, [=](StreamEventListeners::Result result) mutable {
            events->onStreamEventListenerAdded(ids, kNoTransport, request, onid, tsid, sid, componentTag, objectPath,
                                               eventName, static_cast<std::uint32_t>(result));
        });
    });
    return 0;
}

int DtvService::cmdRemoveStreamEventListener(frame::MsgIds& ids, const frame::TransportInfo&, unsigned int request,
                                             unsigned short onid, unsigned short tsid, unsigned short sid,
                                             short componentTag, const std::string& objectPath,
                                             const std::string& eventName) {
    loop.post([=]() mutable {
        const auto result = streamEvents.remove(ids.peer, {onid, tsid, sid, componentTag, objectPath, eventName});
        events->onStreamEventListenerRemoved(ids, kNoTransport, request, onid, tsid, sid, componentTag, objectPath,
                                             eventName, static_cast<std::uint32_t>(result));
    });
    return 0;
}

void DtvService::tellStreamEvent(std::uint32_t browser, const StreamEventListeners::Target& target,
                                 const si::StreamEvent& event) {
    frame::MsgIds ids = only(browser);
    const _ovxDeserVectorU8_struct data = {static_cast<std::uint32_t>(event.data.size()),
                                           const_cast<std::uint8_t*>(event.data.data())};
    events->onStreamEventListenerSignalled(ids, kNoTransport, target.onid, target.tsid, target.sid, target.componentTag,
                                           target.objectPath, target.eventName, data);
}

/// Object carousels are not mounted here; whoever asks is told so.
int DtvService::cmdMountDsmcc(frame::MsgIds& ids, const frame::TransportInfo&, unsigned int request,
                              unsigned short onid, unsigned short tsid, unsigned short sid, short componentTag) {
    loop.post([this, ids, request, onid, tsid, sid, componentTag]() mutable {
        constexpr unsigned short kFailed = 1;
        events->onDsmccMounted(ids, kNoTransport, request, onid, tsid, sid, componentTag, kFailed, std::string());
    });
    return 0;
}

int DtvService::cmdVodGetMaxdomeSecureSerialNumber(frame::MsgIds& ids, const frame::TransportInfo&,
                                                   const std::string&) {
    loop.post([this, ids]() mutable { events->onVodMaxdomeSecureSerialNumber(ids, kNoTransport, serialNumber); });
    return 0;
}

/// The service and its PMT, as the event for data services carries it.
int DtvService::cmdDtvInfoRequest(frame::MsgIds& ids, const frame::TransportInfo&) {
    loop.post([this, ids]() mutable {
        tellServiceInfo(ids);
        const broadcast::Channel* const channel = presentedChannel();
        if (channel == nullptr) {
            return;
        }
        const broadcast::Section pmt = current->si.pmt(channel->serviceId);
        if (!pmt.empty()) {
            events->onDATagsServicePmtDataChange(ids, kNoTransport, networkOf(*channel), channel->transportStreamId,
                                                 channel->serviceId, kFirst, {pmt.begin(), pmt.end()});
        }
    });
    return 0;
}

/// What the EIT's present event tells of its components.
si::Descriptors DtvService::presentEvent(const broadcast::Channel& channel) const {
    const std::vector<broadcast::Section> eit = current->si.eit(channel.serviceId);
    const bool hasPresent = !eit.empty() && si::sectionNumber(eit[0]) == 0;
    return hasPresent ? si::firstEventDescriptors(eit[0]) : si::Descriptors();
}

/// After a PMT of the presented service, or another service whose PMT may not have come.
void DtvService::followStreamEvents(const broadcast::Channel& channel) {
    std::string error;
    if (const std::optional<si::Pmt> pmt = si::parsePmt(current->si.pmt(channel.serviceId), error)) {
        streamEvents.follow(current->demux, channel, *pmt);
    } else {
        streamEvents.rest();
    }
}

/// After a PMT or an EIT of the presented service.
void DtvService::updateComponents(const broadcast::Channel& channel, Components as) {
    std::string error;
    const std::optional<si::Pmt> pmt = si::parsePmt(current->si.pmt(channel.serviceId), error);
    if (!pmt) {
        return;
    }
    std::vector<si::Component> list = si::components(*pmt, presentEvent(channel));
    if (as == Components::ofAnotherService) {
        shown.begin(std::move(list));
    } else if (!shown.update(std::move(list))) {
        return;
    }
    timelines.follow(current->demux, shown.list(), pmt->pcrPid);
    if (events == nullptr) {
        return;
    }
    toEveryone([&](frame::MsgIds ids) {
        for (const si::Component& component : shown.list()) {
            tellComponent(ids, component);
        }
    });
    for (std::uint32_t type = 0; type < kTypes; ++type) {
        if (shown.selected(static_cast<si::ComponentType>(type)) != nullptr) {
            tellSelected(static_cast<si::ComponentType>(type));
        }
    }
}

void DtvService::tellComponent(frame::MsgIds ids, const si::Component& component) {
    const bool selected = shown.selected(component.type) == &component;
    events->onComponentInfoChange(ids, kNoTransport, component.index, static_cast<std::uint32_t>(component.type),
                                  component.pid, component.encoding, component.aspectRatio, component.audioChannels,
                                  tagOf(component), component.scrambled ? 1 : 0, languageCode(component.language),
                                  selected ? 1 : 0);
}

void DtvService::tellSelected(si::ComponentType type) {
    const broadcast::Channel* const channel = presentedChannel();
    if (channel == nullptr) {
        return;
    }
    const si::Component* const selected = shown.selected(type);
    toEveryone([&](frame::MsgIds ids) {
        events->onSelectedComponentChange(ids, kNoTransport, selected == nullptr ? kNoIndex : selected->index,
                                          static_cast<std::uint32_t>(type),
                                          selected == nullptr ? broadcast::kNullPid : selected->pid,
                                          networkOf(*channel), channel->transportStreamId, channel->serviceId);
    });
}

void DtvService::tellPts(std::uint32_t browser, std::uint64_t pts, std::uint64_t pcrBase) {
    frame::MsgIds ids = only(browser);
    events->onPtsNotify(ids, kNoTransport, pts, pcrBase);
}

void DtvService::tellTimeline(std::uint32_t browser, std::uint8_t componentTag, const broadcast::TemiTimeline& timeline,
                              std::uint64_t pts) {
    const auto flags = static_cast<unsigned char>((timeline.paused ? 1U : 0U) | (timeline.discontinuity ? 2U : 0U) |
                                                  (timeline.forceReload ? 4U : 0U));
    frame::MsgIds ids = only(browser);
    events->onTimelineInfoChange(ids, kNoTransport, componentTag, timeline.id, flags, timeline.timescale,
                                 timeline.mediaTimestamp, pts);
}

}  // namespace dtvservice
