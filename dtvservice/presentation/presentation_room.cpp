// Tunes, and tells browsers which service is presented.
#include "presentation_room.h"

#include <algorithm>

#include "channel_list.h"
#include "request_values.h"
#include "sent_together.h"

namespace dtvservice {

using broadcast::Channel;
using broadcast::Section;
using lo::browserdvbservice::TuneInfoChannel;
using nlohmann::json;

namespace {

/// OIPF's channel idType for a tune by delivery system descriptor.
constexpr unsigned int kIdTypeSiDirect = 13;
constexpr int kFirst = 0;
constexpr int kChanged = 1;
constexpr const char* kStarted = "service_started";
constexpr const char* kFailed = "service_failed";

}  // namespace

PresentationRoom::PresentationRoom(Core& newCore) : core(newCore) {
    core.commands.on.cmdTuneToService = calls(*this, &PresentationRoom::cmdTuneToService);
    core.commands.on.cmdTriggerServiceInfoAcquire = calls(*this, &PresentationRoom::cmdTriggerServiceInfoAcquire);
    core.commands.on.cmdSendPMTCache = calls(*this, &PresentationRoom::cmdSendPMTCache);
    core.commands.on.cmdDtvInfoRequest = calls(*this, &PresentationRoom::cmdDtvInfoRequest);
    core.requests.add("channels", [this](const json&) { return channelList(core); });
    core.requests.add("tune", calls(*this, &PresentationRoom::tuneAsOperated));
    core.requests.add("status", calls(*this, &PresentationRoom::describe));
}

void PresentationRoom::cmdTuneToService(Browser asker, const TuneInfoChannel& wanted) {
    const bool isDone = wanted.idType == kIdTypeSiDirect ? tuneByDescriptor(asker, wanted) : tune(asker, wanted);
    if (!isDone) {
        // The presented service does not change. Its triplet in the answer tells the asker so.
        const Channel* const staying = core.presented();
        core.browsers.tell({asker}, &Events::onServiceChanged, kFailed,
                           staying == nullptr ? std::string() : staying->triplet());
    }
}

bool PresentationRoom::tune(Browser asker, const TuneInfoChannel& wanted) {
    const Triplet triplet = {wanted.onid, wanted.tsid, wanted.sid};
    const Multiplexes::Found found =
        core.multiplexes.find([&](const Channel& channel) { return matches(channel, triplet); });
    if (found.channel == nullptr) {
        if (core.browsers.mayTell(asker)) {
            BLOG_TAGGED(blog::kUnsupported, "%s\n", core.multiplexes.whyNotReceived(triplet).c_str());
        }
        return false;
    }
    present(*found.multiplex, *found.channel);
    return true;
}

/// The NIT of any input may describe the wanted multiplex, so the descriptor is compared with all of them.
bool PresentationRoom::tuneByDescriptor(Browser asker, const TuneInfoChannel& wanted) {
    Multiplexes& all = core.multiplexes;
    for (Multiplex& multiplex : all) {
        const Channel* const channel = multiplex.si.find(static_cast<std::uint16_t>(wanted.sid));
        const bool isIt = channel != nullptr && std::any_of(all.begin(), all.end(), [&](const Multiplex& telling) {
                              return telling.si.hasDeliverySystem(*channel, wanted.dsd);
                          });
        if (isIt) {
            present(multiplex, *channel);
            return true;
        }
    }
    if (core.browsers.mayTell(asker)) {
        BLOG_TAGGED_AS(blog::kUnsupported, "cmdTuneToService",
                       "no multiplex with service %u has this delivery system descriptor of %zu bytes\n", wanted.sid,
                       wanted.dsd.size());
    }
    return false;
}

void PresentationRoom::cmdTriggerServiceInfoAcquire(Browser asker) {
    tellServiceInfo(asker);
}

/// A browser that has just started knows nothing yet, so it gets the same as after connecting.
void PresentationRoom::cmdSendPMTCache(Browser asker) {
    browserConnected(asker);
}

/// Sends the service, and its PMT by the event for data services.
void PresentationRoom::cmdDtvInfoRequest(Browser asker) {
    tellServiceInfo(asker);
    const Channel* const channel = core.presented();
    const Section pmt = channel == nullptr ? Section() : core.received().si.pmt(channel->serviceId);
    if (channel != nullptr && !pmt.empty()) {
        core.browsers.tell({asker}, &Events::onDATagsServicePmtDataChange, channel->networkId(),
                           channel->transportStreamId, channel->serviceId, kFirst, {pmt.begin(), pmt.end()});
    }
}

/// Sends all that a tune sends, because unchanged tables are not sent again later.
void PresentationRoom::browserConnected(Browser browser) {
    if (core.presented() != nullptr) {
        const SentTogether together;
        tellServiceInfo(browser);
        core.tellPresented({browser});
    }
}

void PresentationRoom::present(Multiplex& multiplex, const Channel& channel) {
    const SentTogether together;
    toldTriplet = channel.triplet();
    core.present(multiplex, channel);
    if (core.mayTell(multiplex)) {
        BLOG_TAGGED(blog::kOrdinary, "presenting %s %s\n", channel.triplet().c_str(), channel.name.c_str());
    }
    core.browsers.tell(core.browsers.all(), &Events::onServiceChanged, kStarted, channel.triplet());
    core.tellPresented(core.browsers.all());
}

void PresentationRoom::channelListChanged(Multiplex& multiplex) {
    const Channel* const channel = core.presented();
    if (channel == nullptr) {
        presentFirst(multiplex);
    } else if (&multiplex == &core.received() && channel->triplet() != toldTriplet) {
        // The network has become known, so the triplet that browsers have is wrong. Present the service again.
        present(multiplex, *channel);
    }
}

void PresentationRoom::pmtArrived(Multiplex& multiplex, std::uint16_t, const Section&) {
    if (core.presented() == nullptr) {
        presentFirst(multiplex);
    }
}

/// A TV always presents a service: until a browser tunes, the first one whose PMT has arrived. Browsers key the service
/// and its AIT by triplet, so wait until the network is known.
void PresentationRoom::presentFirst(Multiplex& multiplex) {
    const std::vector<Channel>& channels = multiplex.si.channels();
    const auto first = std::find_if(channels.begin(), channels.end(), [&multiplex](const Channel& channel) {
        return !multiplex.si.pmt(channel.serviceId).empty();
    });
    if (first != channels.end() && multiplex.si.isIdentified()) {
        present(multiplex, *first);
    }
}

void PresentationRoom::pmtChanged(const Channel& channel, const Section& section, bool changed) {
    tellPmt(channel, section, changed, core.browsers.all());
}

void PresentationRoom::eitChanged(const Channel&, const Section& section, bool changed) {
    core.browsers.tell(core.browsers.all(), &Events::onEitDataChange, changed ? kChanged : kFirst,
                       {section.begin(), section.end()});
}

void PresentationRoom::tell(Part part, const Channel& channel, const Audience& to) {
    const broadcast::SiDatabase& si = core.received().si;
    const Section pmt = si.pmt(channel.serviceId);
    if (part == Part::pmt && !pmt.empty()) {
        tellPmt(channel, pmt, false, to);
    }
    if (part == Part::eit) {
        for (const Section& section : si.eit(channel.serviceId)) {
            core.browsers.tell(to, &Events::onEitDataChange, kFirst, {section.begin(), section.end()});
        }
    }
}

void PresentationRoom::tellServiceInfo(Browser browser) {
    const Channel* const channel = core.presented();
    core.browsers.tell({browser}, &Events::onAcquireDtvServiceInfo,
                       channel == nullptr ? std::string() : channel->triplet());
}

void PresentationRoom::tellPmt(const Channel& channel, const Section& section, bool changed, const Audience& to) {
    core.browsers.tell(to, &Events::onPmtDataChange, channel.networkId(), channel.transportStreamId, channel.serviceId,
                       changed ? kChanged : kFirst, {section.begin(), section.end()});
}

/// An operator may take the triplet from a channel list that is older or newer than the service's network.
Multiplexes::Found PresentationRoom::findListed(const Triplet& wanted) const {
    const auto isSameService = [&wanted](const Channel& channel) {
        return channel.transportStreamId == wanted.tsid && channel.serviceId == wanted.sid;
    };
    Multiplexes& all = core.multiplexes;
    Multiplexes::Found found =
        all.find([&](const Channel& channel) { return isSameService(channel) && channel.networkId() == wanted.onid; });
    if (found.channel == nullptr) {
        found = all.find([&](const Channel& channel) {
            return isSameService(channel) && (!channel.originalNetworkId || wanted.onid == si::kUnknownNetworkId);
        });
    }
    return found;
}

json PresentationRoom::tuneAsOperated(const json& request) {
    const Triplet wanted = {getNumber<std::uint16_t>(request, "onid"), getNumber<std::uint16_t>(request, "tsid"),
                            getNumber<std::uint16_t>(request, "sid")};
    const Multiplexes::Found found = findListed(wanted);
    if (found.channel == nullptr) {
        throw std::invalid_argument(core.multiplexes.whyNotReceived(wanted));
    }
    present(*found.multiplex, *found.channel);
    return json::object();
}

json PresentationRoom::describe(const json&) {
    const Channel* const channel = core.presented();
    if (channel == nullptr) {
        return json::object();
    }
    return {{"presented_service",
             {{"onid", channel->networkId()},
              {"tsid", channel->transportStreamId},
              {"sid", channel->serviceId},
              {"name", channel->name},
              {"input", core.multiplexes.numberOf(core.received())}}}};
}

}  // namespace dtvservice
