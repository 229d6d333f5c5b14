// Presenting a service and telling browsers of it.
#include "dtv_service.h"

#include <algorithm>

#include "si/ait.h"

namespace dtvservice {

using broadcast::Channel;
using broadcast::Section;
using lo::browserdvbservice::TuneInfoChannel;

namespace {

/// OIPF's channel idType of a tune by delivery system descriptor.
constexpr unsigned int kIdTypeSiDirect = 13;
constexpr unsigned short kUnknownId = 0xFFFF;
constexpr int kFirst = 0;
constexpr int kChanged = 1;
constexpr const char* kStarted = "service_started";
constexpr const char* kFailed = "service_failed";

std::string asText(const Section& section) {
    return {section.begin(), section.end()};
}

/// A network that no SDT has named yet is any.
bool matches(const Channel& channel, const TuneInfoChannel& wanted) {
    return (!channel.originalNetworkId || *channel.originalNetworkId == wanted.onid) &&
           channel.transportStreamId == wanted.tsid && channel.serviceId == wanted.sid;
}

}  // namespace

DtvService::DtvService(EventLoop& newLoop)
    : loop(newLoop),
      timelines([this](auto... values) { tellPts(values...); }, [this](auto... values) { tellTimeline(values...); }),
      streamEvents(newLoop, [this](auto&&... values) { tellStreamEvent(values...); }) {}

unsigned short DtvService::networkOf(const Channel& channel) {
    return channel.originalNetworkId.value_or(kUnknownId);
}

broadcast::Demux& DtvService::addMultiplex() {
    Multiplex& added = multiplexes.emplace_back(static_cast<broadcast::SiListener&>(*this));
    if (current == nullptr) {
        follow(added);
    }
    return added.demux;
}

DtvService::Multiplex* DtvService::multiplexOf(const broadcast::SiDatabase& si) {
    const auto found = std::find_if(multiplexes.begin(), multiplexes.end(),
                                    [&si](const Multiplex& multiplex) { return &multiplex.si == &si; });
    return found == multiplexes.end() ? nullptr : &*found;
}

/// A tuner receives one multiplex: filters on another one end, and their browsers are told.
void DtvService::follow(Multiplex& multiplex) {
    current = &multiplex;
    for (const SectionFilters::Name& ended : filters.follow(multiplex.demux)) {
        frame::MsgIds ids = only(ended.first);
        events->onFilterClosed(ids, kNoTransport, ended.second);
    }
}

int DtvService::cmdTuneToService(frame::MsgIds& ids, const frame::TransportInfo&, const TuneInfoChannel& channel) {
    loop.post([this, ids, channel] { tune(ids, channel); });
    return 0;
}

/// Nothing is heard from this service, so every source is as good as another, and the change is over at once.
int DtvService::cmdSetAudioSource(frame::MsgIds& ids, const frame::TransportInfo&, unsigned int session,
                                  const std::string& source) {
    BLOG_TAGGED(blog::kOrdinary, "audio source \"%s\", session %u\n", source.c_str(), session);
    loop.post([this, ids, session]() mutable {
        constexpr int kDone = 0;
        events->onSetAudioSourceFinished(ids, kNoTransport, session, kDone);
    });
    return 0;
}

int DtvService::cmdTriggerServiceInfoAcquire(frame::MsgIds& ids, const frame::TransportInfo&) {
    loop.post([this, ids] { tellServiceInfo(ids); });
    return 0;
}

int DtvService::cmdSendPMTCache(frame::MsgIds& ids, const frame::TransportInfo&) {
    loop.post([this, ids] {
        const Channel* const channel = presentedChannel();
        if (channel != nullptr && !current->si.pmt(channel->serviceId).empty()) {
            tellPmt(ids, *channel, current->si.pmt(channel->serviceId), false);
        }
    });
    return 0;
}

int DtvService::cmdTriggerAitReparse(frame::MsgIds& ids, const frame::TransportInfo&) {
    loop.post([this, ids] {
        if (const Channel* const channel = presentedChannel()) {
            tellAit(ids, *channel);
        }
    });
    return 0;
}

/// A browser that was there before the service asked for the channel in vain, so it is told; and whose AIT the sections
/// are that it will be given.
void DtvService::browserConnected(const frame::TransportInfo& peer) {
    BLOG_TAGGED(blog::kOrdinary, "browser %u connected\n", peer.peer);
    const frame::MsgIds ids = only(peer.peer);
    loop.post([this, ids] {
        browsers.insert(ids.peer);
        if (const Channel* const channel = presentedChannel()) {
            tellServiceInfo(ids);
            tellAitChannel(ids, *channel);
        }
    });
}

void DtvService::browserDisconnected(const frame::TransportInfo& peer) {
    BLOG_TAGGED(blog::kOrdinary, "browser %u disconnected\n", peer.peer);
    loop.post([this, browser = peer.peer] {
        filters.forget(browser);
        timelines.forget(browser);
        streamEvents.forget(browser);
        forgetOperated(browser);
        browsers.erase(browser);
    });
}

const Channel* DtvService::presentedChannel() const {
    return presented ? current->si.find(*presented) : nullptr;
}

/// Whether a multiplex that is received has the service.
bool DtvService::isReceived(const Channel& channel) const {
    TuneInfoChannel wanted;
    wanted.onid = *channel.originalNetworkId;
    wanted.tsid = channel.transportStreamId;
    wanted.sid = channel.serviceId;
    return std::any_of(multiplexes.begin(), multiplexes.end(), [&wanted](const Multiplex& multiplex) {
        const std::vector<Channel>& received = multiplex.si.channels();
        return std::any_of(received.begin(), received.end(),
                           [&wanted](const Channel& candidate) { return matches(candidate, wanted); });
    });
}

/// Services that a multiplex tells of and none has: each once, under the first name that is told.
std::vector<Channel> DtvService::channelsWithoutInput() const {
    std::map<std::string, Channel> found;  // by triplet
    for (const Multiplex& multiplex : multiplexes) {
        for (const Channel& channel : multiplex.si.otherChannels()) {
            Channel& kept = found.try_emplace(channel.triplet(), channel).first->second;
            kept.name = kept.name.empty() ? channel.name : kept.name;
        }
    }
    std::vector<Channel> list;
    for (const auto& entry : found) {
        if (!isReceived(entry.second)) {
            list.push_back(entry.second);
        }
    }
    return list;
}

std::string DtvService::whyNotReceived(const std::string& triplet) const {
    const std::vector<Channel> others = channelsWithoutInput();
    const bool isKnown = std::any_of(others.begin(), others.end(),
                                     [&triplet](const Channel& channel) { return channel.triplet() == triplet; });
    return isKnown ? "service " + triplet + " is on no input" : "no service " + triplet + " in the channel list";
}

bool DtvService::isPresented(const broadcast::SiDatabase& of, std::uint16_t serviceId) const {
    return events != nullptr && &of == &current->si && presented == serviceId && of.find(serviceId) != nullptr;
}

void DtvService::tune(frame::MsgIds asker, const TuneInfoChannel& wanted) {
    if (wanted.idType == kIdTypeSiDirect) {
        if (tuneByDescriptor(wanted)) {
            return;
        }
    } else {
        for (Multiplex& multiplex : multiplexes) {
            for (const Channel& channel : multiplex.si.channels()) {
                if (matches(channel, wanted)) {
                    present(multiplex, channel);
                    return;
                }
            }
        }
        const std::string triplet =
            std::to_string(wanted.onid) + ":" + std::to_string(wanted.tsid) + ":" + std::to_string(wanted.sid);
        BLOG_TAGGED(blog::kUnsupported, "%s\n", whyNotReceived(triplet).c_str());
    }
    // What is presented stays, and its triplet is what the asker is to believe.
    const Channel* const staying = presentedChannel();
    events->onServiceChanged(asker, kNoTransport, kFailed, staying == nullptr ? std::string() : staying->triplet());
}

/// The multiplex is the one that a NIT, its own or another's, gives these very bytes.
bool DtvService::tuneByDescriptor(const TuneInfoChannel& wanted) {
    for (Multiplex& multiplex : multiplexes) {
        const Channel* const channel = multiplex.si.find(static_cast<std::uint16_t>(wanted.sid));
        const bool isIt =
            channel != nullptr && std::any_of(multiplexes.begin(), multiplexes.end(), [&](const Multiplex& telling) {
                return telling.si.hasDeliverySystem(*channel, wanted.dsd);
            });
        if (isIt) {
            present(multiplex, *channel);
            return true;
        }
    }
    BLOG_TAGGED_AS(blog::kUnsupported, "cmdTuneToService",
                   "no multiplex with service %u has this delivery system descriptor of %zu bytes\n", wanted.sid,
                   wanted.dsd.size());
    return false;
}

void DtvService::present(Multiplex& multiplex, const Channel& channel) {
    follow(multiplex);
    presented = channel.serviceId;
    toldTriplet = channel.triplet();
    followStreamEvents(channel);
    timelines.rest();
    BLOG_TAGGED(blog::kOrdinary, "presenting %s %s\n", channel.triplet().c_str(), channel.name.c_str());
    if (events == nullptr) {
        updateComponents(channel, Components::ofAnotherService);
        return;
    }
    const Section pmt = multiplex.si.pmt(channel.serviceId);
    toEveryone([&](frame::MsgIds ids) { events->onServiceChanged(ids, kNoTransport, kStarted, channel.triplet()); });
    shown.begin({});
    if (!pmt.empty()) {
        toEveryone([&](frame::MsgIds ids) { tellPmt(ids, channel, pmt, false); });
        updateComponents(channel, Components::ofAnotherService);
    }
    toEveryone([&](frame::MsgIds ids) {
        for (const Section& section : multiplex.si.eit(channel.serviceId)) {
            events->onEitDataChange(ids, kNoTransport, kFirst, asText(section));
        }
        tellAit(ids, channel);
        tellAitState(ids, channel);
    });
}

void DtvService::onAitSignalled(const broadcast::SiDatabase& of, std::uint16_t serviceId, bool) {
    if (isPresented(of, serviceId)) {
        toEveryone([&](frame::MsgIds ids) { tellAitState(ids, *of.find(serviceId)); });
    }
}

void DtvService::tellAitState(frame::MsgIds ids, const Channel& channel) {
    constexpr unsigned short kNone = 0;
    constexpr unsigned short kSignalled = 1;
    events->onAitParsingStateChanged(ids, kNoTransport,
                                     current->si.signalsHbbTv(channel.serviceId) ? kSignalled : kNone);
}

void DtvService::tellServiceInfo(frame::MsgIds ids) {
    const Channel* const channel = presentedChannel();
    events->onAcquireDtvServiceInfo(ids, kNoTransport, channel == nullptr ? std::string() : channel->triplet());
}

void DtvService::tellPmt(frame::MsgIds ids, const Channel& channel, const Section& section, bool changed) {
    events->onPmtDataChange(ids, kNoTransport, networkOf(channel), channel.transportStreamId, channel.serviceId,
                            changed ? kChanged : kFirst, asText(section));
}

void DtvService::tellAitChannel(frame::MsgIds ids, const Channel& channel) {
    events->onAitChannelInfoUpdated(ids, kNoTransport, 0, networkOf(channel), channel.transportStreamId,
                                    channel.serviceId);
}

/// The channel first, so that a browser knows whose the sections are.
void DtvService::tellAit(frame::MsgIds ids, const Channel& channel) {
    tellAitChannel(ids, channel);
    for (const Section& section : current->si.ait(channel.serviceId)) {
        tellAitSection(ids, section);
    }
}

/// The section, then what it says of each application.
void DtvService::tellAitSection(frame::MsgIds ids, const Section& section) {
    events->onAitSectionAvailable(ids, kNoTransport, asText(section));
    std::string error;
    const std::optional<si::Ait> ait = si::parseAit(section, error);
    if (!ait) {
        BLOG_TAGGED(blog::kUnsupported, "%s\n", error.c_str());
        return;
    }
    for (const si::Ait::Application& application : ait->applications) {
        const si::Ait::Profile profile =
            application.profiles.empty() ? si::Ait::Profile() : application.profiles.front();
        events->onAitInfoAvailable(ids, kNoTransport, application.organisationId, application.applicationId,
                                   application.controlCode, profile.major, profile.minor, profile.micro,
                                   application.urlBase(), application.initialPath, application.priority);
        for (const std::string& boundary : application.boundaries) {
            events->onAitBoundaryExtensionAvailable(ids, kNoTransport, application.organisationId,
                                                    application.applicationId, boundary);
        }
    }
}

void DtvService::onChannelList(const broadcast::SiDatabase& of) {
    BLOG_TAGGED(blog::kOrdinary, "%zu services\n", of.channels().size());
    const bool isCurrent = &of == &current->si;
    const Channel* const channel = isCurrent ? presentedChannel() : nullptr;
    if (isCurrent && channel == nullptr) {
        presented.reset();
    }
    if (!presented) {
        presentFirst(of);
    } else if (channel != nullptr && events != nullptr && channel->triplet() != toldTriplet) {
        // Its network has become known. What was told of it so far was told of another triplet.
        present(*current, *channel);
    }
}

/// A set always presents something: until a browser tunes, the first service whose PMT has come. Whoever is told of it
/// files it, and its AIT, under its triplet, so that is to be whole.
void DtvService::presentFirst(const broadcast::SiDatabase& of) {
    const std::vector<Channel>& channels = of.channels();
    const auto first = std::find_if(channels.begin(), channels.end(),
                                    [&of](const Channel& channel) { return !of.pmt(channel.serviceId).empty(); });
    if (first != channels.end() && of.isIdentified()) {
        present(*multiplexOf(of), *first);
    }
}

void DtvService::onPmt(const broadcast::SiDatabase& of, std::uint16_t serviceId, const Section& section, bool changed) {
    const Channel* const channel = of.find(serviceId);
    if (&of == &current->si) {
        filters.pmtChanged(serviceId, section);
    }
    if (!presented) {
        presentFirst(of);
    } else if (isPresented(of, serviceId)) {
        toEveryone([&](frame::MsgIds ids) { tellPmt(ids, *channel, section, changed); });
        followStreamEvents(*channel);
        updateComponents(*channel, Components::ofTheSameService);
    }
}

void DtvService::onEit(const broadcast::SiDatabase& of, std::uint16_t serviceId, const Section& section, bool changed) {
    if (isPresented(of, serviceId)) {
        toEveryone([&](frame::MsgIds ids) {
            events->onEitDataChange(ids, kNoTransport, changed ? kChanged : kFirst, asText(section));
        });
        updateComponents(*of.find(serviceId), Components::ofTheSameService);
    }
}

void DtvService::onAit(const broadcast::SiDatabase& of, std::uint16_t serviceId, const Section& section, bool) {
    if (isPresented(of, serviceId)) {
        toEveryone([&](frame::MsgIds ids) { tellAitSection(ids, section); });
    }
}

}  // namespace dtvservice
