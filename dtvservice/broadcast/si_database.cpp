// Combines the tables of a multiplex.
#include "si_database.h"

#include <set>

namespace broadcast {

namespace {

/// Number of PAT repetitions after which the network counts as unknown. The PAT is sent about ten times a second, so
/// this takes 2.5 s; an SDT would arrive within 2 s.
constexpr std::uint64_t kPatsWithoutNetwork = 25;

}  // namespace

SiDatabase::Service::Service(SiDatabase& database, const Channel& channel)
    : ait(database.demux, {[&database, id = channel.serviceId](bool signalled) {
                               database.listener.onAitSignalled(database, id, signalled);
                           },
                           [&database, id = channel.serviceId](si::Bytes section, Update update) {
                               database.listener.onAit(database, id, copyOf(section), update == Update::changed);
                           }}),
      pmt(channel.pmtPid, channel.serviceId,
          [this, &database, id = channel.serviceId](const si::Pmt& parsed, si::Bytes section, Update update) {
              if (database.added != nullptr) {
                  database.addApplication(*this, parsed, section, update);
                  return;
              }
              pmtFields = parsed;
              ait.follow(parsed);
              database.listener.onPmt(database, id, copyOf(section), update == Update::changed);
          }) {}

SiDatabase::SiDatabase(SectionDemux& newDemux, SiListener& newListener, const AddedApplication* newAdded)
    : demux(newDemux), listener(newListener), added(newAdded) {
    subscriptions.emplace_back(demux, PatTable::kPid, [this](si::Bytes section) { onPatSection(section); });
    subscriptions.emplace_back(demux, NetworkTable::kPid, [this](si::Bytes section) { onNitSection(section); });
    subscriptions.emplace_back(demux, SdtTable::kPid, [this](si::Bytes section) { onSdtSection(section); });
    subscriptions.emplace_back(demux, EitTable::kPid, [this](si::Bytes section) { onEitSection(section); });
}

const Channel* SiDatabase::find(std::uint16_t serviceId) const {
    const auto found = places.find(serviceId);
    return found == places.end() ? nullptr : &channels_[found->second];
}

const SiDatabase::Service* SiDatabase::serviceOf(std::uint16_t serviceId) const {
    const auto found = services.find(serviceId);
    return found == services.end() ? nullptr : &found->second;
}

Section SiDatabase::pmt(std::uint16_t serviceId) const {
    const Service* const service = serviceOf(serviceId);
    if (service == nullptr) {
        return {};
    }
    return added == nullptr ? service->pmt.section() : service->toldPmt;
}

const si::Pmt* SiDatabase::pmtFields(std::uint16_t serviceId) const {
    const Service* const service = serviceOf(serviceId);
    return service == nullptr || !service->pmtFields ? nullptr : &*service->pmtFields;
}

std::vector<Section> SiDatabase::eit(std::uint16_t serviceId) const {
    std::vector<Section> list;
    if (const Service* const service = serviceOf(serviceId)) {
        append(service->eit.sections(), list);
    }
    return list;
}

std::vector<Section> SiDatabase::ait(std::uint16_t serviceId) const {
    const Service* const service = serviceOf(serviceId);
    if (service == nullptr) {
        return {};
    }
    return service->toldAdded ? std::vector<Section>{added->ait()} : service->ait.sections();
}

bool SiDatabase::signalsHbbTv(std::uint16_t serviceId) const {
    const Service* const service = serviceOf(serviceId);
    return service != nullptr && (service->ait.isSignalled() || !service->toldPmt.empty());
}

bool SiDatabase::isIdentified() const {
    const bool isKnown = channels_.empty() || channels_.front().originalNetworkId;
    return isKnown || pat.repetitions() >= kPatsWithoutNetwork;
}

void SiDatabase::onPatSection(si::Bytes section) {
    const bool wasIdentified = isIdentified();
    switch (pat.onSection(section)) {
        case PatTable::Outcome::none:
            break;
        case PatTable::Outcome::repetition:
            if (!wasIdentified && isIdentified()) {
                listener.onChannelList(*this);
            }
            break;
        case PatTable::Outcome::list:
            followServices();
            break;
    }
}

/// Replaces the tables of a service whose PMT has moved to another PID.
void SiDatabase::followServices() {
    channels_ = pat.channels();
    places.clear();
    for (std::size_t place = 0; place < channels_.size(); ++place) {
        places.try_emplace(channels_[place].serviceId, place);
    }
    for (auto service = services.begin(); service != services.end();) {
        service = isListed(service->first, service->second.pmt.pid()) ? std::next(service) : services.erase(service);
    }
    for (const Channel& channel : channels_) {
        services.try_emplace(channel.serviceId, *this, channel);
    }
    followPmtPids();
    nameChannels();
}

/// One subscription a PID, however many services have their PMTs there.
void SiDatabase::followPmtPids() {
    std::set<std::uint16_t> wanted;
    for (const auto& service : services) {
        wanted.insert(service.second.pmt.pid());
    }
    for (auto known = pmtPids.begin(); known != pmtPids.end();) {
        known = wanted.count(known->first) != 0 ? std::next(known) : pmtPids.erase(known);
    }
    for (const std::uint16_t pid : wanted) {
        if (pmtPids.count(pid) == 0) {
            pmtPids.try_emplace(pid, demux, pid, [this, pid](si::Bytes section) { onPmtSection(pid, section); });
        }
    }
}

void SiDatabase::onPmtSection(std::uint16_t pid, si::Bytes section) {
    const auto service = services.find(si::tableIdExtension(section));
    if (service != services.end() && service->second.pmt.pid() == pid) {
        service->second.pmt.onSection(section);
    }
}

/// Tells the added application in the order of a broadcast: signalled, PMT, AIT. The AIT is told once for each service,
/// because it never changes.
void SiDatabase::addApplication(Service& service, const si::Pmt& pmt, si::Bytes section, Update update) {
    const std::optional<Section> changed = added->signalledIn(pmt);
    const bool isFirst = service.toldPmt.empty();
    service.toldPmt = changed ? *changed : copyOf(section);
    std::string error;
    service.pmtFields = si::parsePmt(service.toldPmt, error);
    if (!changed) {
        listener.onPmtWithoutRoom(*this, pmt.serviceId);
    }
    if (isFirst) {
        listener.onAitSignalled(*this, pmt.serviceId, true);
    }
    listener.onPmt(*this, pmt.serviceId, service.toldPmt, update == Update::changed);
    if (isFirst) {
        service.toldAdded = true;
        listener.onAit(*this, pmt.serviceId, added->ait(), false);
    }
}

bool SiDatabase::isListed(std::uint16_t serviceId, std::uint16_t pmtPid) const {
    const Channel* const channel = find(serviceId);
    return channel != nullptr && channel->pmtPid == pmtPid;
}

/// Sets the network and name of every channel, and notifies the listener.
void SiDatabase::nameChannels() {
    for (Channel& channel : channels_) {
        sdt.describe(channel);
    }
    listener.onChannelList(*this);
}

void SiDatabase::onSdtSection(si::Bytes section) {
    network.onSdtSection(section);
    if (sdt.onSection(section, pat.transportStreamId())) {
        nameChannels();
    }
}

void SiDatabase::onNitSection(si::Bytes section) {
    const std::optional<si::Nit> nit = network.onNitSection(section);
    if (!nit) {
        return;
    }
    const std::optional<std::uint16_t> own = pat.transportStreamId();
    bool hasLearned = false;
    for (const si::Nit::TransportStream& stream : nit->transportStreams) {
        const bool isNew = sdt.learnNetwork(stream.transportStreamId, stream.originalNetworkId, own);
        hasLearned = hasLearned || (isNew && stream.transportStreamId == own);
    }
    if (hasLearned) {
        nameChannels();
    }
}

/// Does not compare transport_stream_id: an EIT (actual) is always the multiplex's own, and recorders that rewrite the
/// PAT leave the old identifier in the EIT.
void SiDatabase::onEitSection(si::Bytes section) {
    const std::optional<std::uint16_t> own = pat.transportStreamId();
    if (!EitTable::isEit(section) || !own) {
        return;
    }
    const auto service = services.find(si::tableIdExtension(section));
    if (service == services.end()) {
        return;
    }
    if (sdt.learnNetwork(*own, EitTable::networkId(section), own)) {
        nameChannels();
    }
    const Update update = service->second.eit.file(section);
    if (update != Update::none) {
        listener.onEit(*this, service->first, copyOf(section), update == Update::changed);
    }
}

}  // namespace broadcast
