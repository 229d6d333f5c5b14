// Following the tables of a multiplex.
#include "si_database.h"

#include <algorithm>

#include "si/ait.h"

namespace broadcast {

namespace {

constexpr std::uint16_t kPatPid = 0x0000;
constexpr std::uint16_t kNitPid = 0x0010;
constexpr std::uint16_t kSdtPid = 0x0011;
constexpr std::uint16_t kEitPid = 0x0012;
constexpr std::uint8_t kPatTableId = 0x00;
constexpr std::uint8_t kPmtTableId = 0x02;
constexpr std::uint8_t kNitActualTableId = 0x40;
constexpr std::uint8_t kSdtActualTableId = 0x42;
constexpr std::uint8_t kSdtOtherTableId = 0x46;
/// A broadcast may not make this process keep more than any network has.
constexpr std::size_t kMostStreams = 1000;
constexpr std::size_t kMostServices = 1000;  // of a stream
constexpr std::uint8_t kMostSdtSections = 32;
/// 2.5 s where the PAT comes ten times a second; the SDT is due every 2 s.
constexpr std::uint64_t kPatSectionsWithoutNetwork = 25;
constexpr std::uint8_t kEitPresentFollowingActualTableId = 0x4E;
constexpr std::uint8_t kAitTableId = 0x74;
constexpr std::size_t kLongHeader = 8;

/// Two bytes of a section that has them.
std::uint16_t wordAt(si::Bytes section, std::size_t at) {
    return static_cast<std::uint16_t>(section.data[at] << 8U | section.data[at + 1]);
}

/// A long-form section of that table which is valid now.
bool isCurrent(si::Bytes section, std::uint8_t tableId) {
    return section.size > kLongHeader && section.data[0] == tableId && (section.data[1] & 0x80) != 0 &&
           (section.data[5] & 0x01) != 0;
}

bool isSdt(si::Bytes section, std::uint8_t tableId) {
    return isCurrent(section, tableId) && si::sectionNumber(section) < kMostSdtSections;
}

}  // namespace

std::string Channel::triplet() const {
    return std::to_string(networkId()) + ":" + std::to_string(transportStreamId) + ":" + std::to_string(serviceId);
}

SiDatabase::SiDatabase(Demux& newDemux, SiListener& newListener) : demux(newDemux), listener(newListener) {
    subscriptions = {
        demux.subscribe(kPatPid, [this](si::Bytes section) { onPatSection(section); }),
        demux.subscribe(kNitPid, [this](si::Bytes section) { onNitSection(section); }),
        demux.subscribe(kSdtPid, [this](si::Bytes section) { onSdtSection(section); }),
        demux.subscribe(kEitPid, [this](si::Bytes section) { onEitSection(section); }),
    };
}

SiDatabase::~SiDatabase() {
    for (const Demux::Subscription subscription : subscriptions) {
        demux.unsubscribe(subscription);
    }
    for (auto& entry : services) {
        dropService(entry.second);
    }
}

const Channel* SiDatabase::find(std::uint16_t serviceId) const {
    const auto found = std::find_if(channels_.begin(), channels_.end(),
                                    [serviceId](const Channel& channel) { return channel.serviceId == serviceId; });
    return found == channels_.end() ? nullptr : &*found;
}

Section SiDatabase::pmt(std::uint16_t serviceId) const {
    const auto found = services.find(serviceId);
    if (found == services.end() || found->second.pmt.sections.empty()) {
        return {};
    }
    return found->second.pmt.sections.begin()->second;
}

std::vector<Section> SiDatabase::eit(std::uint16_t serviceId) const {
    std::vector<Section> sections;
    const auto found = services.find(serviceId);
    if (found != services.end()) {
        for (const auto& entry : found->second.eit.sections) {
            sections.push_back(entry.second);
        }
    }
    return sections;
}

std::vector<Section> SiDatabase::ait(std::uint16_t serviceId) const {
    std::vector<Section> sections;
    const auto found = services.find(serviceId);
    if (found != services.end()) {
        for (const auto& ait : found->second.aits) {
            for (const auto& entry : ait.second.sections) {
                sections.push_back(entry.second);
            }
        }
    }
    return sections;
}

bool SiDatabase::signalsHbbTv(std::uint16_t serviceId) const {
    const auto found = services.find(serviceId);
    return found != services.end() && signalsHbbTv(found->second);
}

bool SiDatabase::signalsHbbTv(const Service& service) {
    return service.listsHbbTv || !service.aits.empty();
}

/// Files a section under its number. A new version forgets the sections of the old one.
SiDatabase::Update SiDatabase::file(SubTable& table, si::Bytes section) {
    const std::uint8_t version = si::sectionVersion(section);
    const std::uint8_t number = si::sectionNumber(section);
    if (table.version != version) {
        table.changed = table.version.has_value();
        table.version = version;
        table.sections.clear();
    }
    Section bytes(section.data, section.data + section.size);
    const auto known = table.sections.find(number);
    if (known != table.sections.end() && known->second == bytes) {
        return Update::none;
    }
    table.changed = table.changed || known != table.sections.end();
    table.sections[number] = std::move(bytes);
    return table.changed ? Update::changed : Update::first;
}

/// Files a section under its number alone: some broadcasters give each section of an EIT a version of its own. Sections
/// behind the last one are forgotten.
SiDatabase::Update SiDatabase::fileByNumber(SubTable& table, si::Bytes section) {
    const std::uint8_t number = si::sectionNumber(section);
    Section bytes(section.data, section.data + section.size);
    const auto known = table.sections.find(number);
    if (known != table.sections.end() && known->second == bytes) {
        return Update::none;
    }
    const Update update = known == table.sections.end() ? Update::first : Update::changed;
    table.sections[number] = std::move(bytes);
    const std::uint8_t last = std::max(number, si::lastSectionNumber(section));
    table.sections.erase(table.sections.upper_bound(last), table.sections.end());
    return update;
}

bool SiDatabase::isWhole(const SubTable& table, si::Bytes latest) {
    return table.sections.size() == std::size_t{1} + si::lastSectionNumber(latest);
}

/// Adds what the section names. Names of an older version go when the new one is whole: until then they are better than
/// none.
void SiDatabase::takeNames(const SubTable& sdt, si::Bytes section, const si::Sdt& parsed, Names& names) {
    const auto add = [&names](const si::Sdt& part) {
        for (const si::Sdt::Service& service : part.services) {
            if (names.size() < kMostServices || names.find(service.serviceId) != names.end()) {
                names[service.serviceId] = service.name;
            }
        }
    };
    if (!isWhole(sdt, section)) {
        add(parsed);
        return;
    }
    names.clear();
    for (const auto& entry : sdt.sections) {
        std::string error;
        if (const std::optional<si::Sdt> part = si::parseSdt(entry.second, error)) {
            add(*part);
        }
    }
}

bool SiDatabase::isIdentified() const {
    const bool isKnown = channels_.empty() || channels_.front().originalNetworkId;
    return isKnown || repeatedPatSections >= kPatSectionsWithoutNetwork;
}

void SiDatabase::onPatSection(si::Bytes section) {
    if (!isCurrent(section, kPatTableId)) {
        return;
    }
    if (file(pat, section) == Update::none) {
        onRepeatedPatSection();
        return;
    }
    // A PAT counts when all of its sections are there.
    if (isWhole(pat, section)) {
        applyPat();
    }
}

void SiDatabase::onRepeatedPatSection() {
    const bool wasIdentified = isIdentified();
    ++repeatedPatSections;
    if (!wasIdentified && isIdentified()) {
        listener.onChannelList(*this);
    }
}

void SiDatabase::applyPat() {
    std::vector<Channel> list;
    for (const auto& entry : pat.sections) {
        std::string error;
        const std::optional<si::Pat> parsed = si::parsePat(entry.second, error);
        if (!parsed) {
            ++unreadable_;
            continue;
        }
        transportStreamId = parsed->transportStreamId;
        for (const si::Pat::Program& program : parsed->programs) {
            list.push_back({std::nullopt, parsed->transportStreamId, program.serviceId, program.pmtPid, {}});
        }
    }
    for (auto service = services.begin(); service != services.end();) {
        const Channel* const before = find(service->first);
        const auto now = std::find_if(list.begin(), list.end(), [&service](const Channel& channel) {
            return channel.serviceId == service->first;
        });
        if (now != list.end() && before != nullptr && before->pmtPid == now->pmtPid) {
            ++service;
        } else {
            dropService(service->second);
            service = services.erase(service);
        }
    }
    channels_ = std::move(list);
    for (const Channel& channel : channels_) {
        const std::uint16_t serviceId = channel.serviceId;
        if (services.find(serviceId) == services.end()) {
            services[serviceId].pmtSubscription = demux.subscribe(
                channel.pmtPid, [this, serviceId](si::Bytes section) { onPmtSection(serviceId, section); });
        }
    }
    nameChannels();
}

/// Gives every channel what is known of its multiplex, and tells of the list.
void SiDatabase::nameChannels() {
    for (Channel& channel : channels_) {
        const auto multiplex = multiplexes.find(channel.transportStreamId);
        channel.originalNetworkId.reset();
        channel.name.clear();
        if (multiplex != multiplexes.end()) {
            const auto name = multiplex->second.names.find(channel.serviceId);
            channel.originalNetworkId = multiplex->second.originalNetworkId;
            channel.name = name == multiplex->second.names.end() ? std::string() : name->second;
        }
    }
    listener.onChannelList(*this);
}

void SiDatabase::dropService(Service& service) {
    demux.unsubscribe(service.pmtSubscription);
    for (const Demux::Subscription subscription : service.aitSubscriptions) {
        demux.unsubscribe(subscription);
    }
}

/// None when there are too many: only the stream that the PAT is of takes another's place.
SiDatabase::Multiplex* SiDatabase::multiplexOf(std::uint16_t transportStream) {
    if (multiplexes.size() >= kMostStreams && multiplexes.find(transportStream) == multiplexes.end()) {
        if (transportStream != transportStreamId) {
            return nullptr;
        }
        multiplexes.erase(multiplexes.begin());
    }
    return &multiplexes[transportStream];
}

void SiDatabase::onSdtSection(si::Bytes section) {
    if (isSdt(section, kSdtOtherTableId)) {
        onOtherSdtSection(section);
    }
    if (!isSdt(section, kSdtActualTableId)) {
        return;
    }
    Multiplex* const multiplex = multiplexOf(si::tableIdExtension(section));
    if (multiplex == nullptr || file(multiplex->sdt, section) == Update::none) {
        return;
    }
    std::string error;
    const std::optional<si::Sdt> parsed = si::parseSdt(section, error);
    if (!parsed) {
        ++unreadable_;
        return;
    }
    multiplex->originalNetworkId = parsed->originalNetworkId;
    takeNames(multiplex->sdt, section, *parsed, multiplex->names);
    nameChannels();
}

SiDatabase::NetworkStream* SiDatabase::networkStream(std::uint16_t onid, std::uint16_t transportStream) {
    const std::pair<std::uint16_t, std::uint16_t> key = {onid, transportStream};
    const bool isKnown = network.find(key) != network.end();
    return isKnown || network.size() < kMostStreams ? &network[key] : nullptr;
}

void SiDatabase::onOtherSdtSection(si::Bytes section) {
    constexpr std::size_t kNetworkAt = 8;
    constexpr std::size_t kShortest = 15;
    if (section.size < kShortest) {
        ++unreadable_;
        return;
    }
    NetworkStream* const stream = networkStream(wordAt(section, kNetworkAt), si::tableIdExtension(section));
    if (stream == nullptr || file(stream->sdt, section) == Update::none) {
        return;
    }
    std::string error;
    const std::optional<si::Sdt> parsed = si::parseSdt(section, error);
    if (!parsed) {
        ++unreadable_;
        return;
    }
    takeNames(stream->sdt, section, *parsed, stream->names);
}

void SiDatabase::addNetworkStream(const si::Nit::TransportStream& stream) {
    constexpr std::uint8_t kServiceList = 0x41;
    constexpr std::size_t kEntry = 3;
    NetworkStream* const known = networkStream(stream.originalNetworkId, stream.transportStreamId);
    if (known == nullptr) {
        return;
    }
    known->descriptors = stream.descriptors;
    for (const si::Descriptor& descriptor : stream.descriptors) {
        for (std::size_t at = 0; descriptor.tag == kServiceList && at + kEntry <= descriptor.bytes.size();
             at += kEntry) {
            if (known->listed.size() < kMostServices) {
                known->listed.insert(wordAt(descriptor.bytes, at));
            }
        }
    }
}

void SiDatabase::addNetworkStreams(const si::Nit& part) {
    for (const si::Nit::TransportStream& stream : part.transportStreams) {
        addNetworkStream(stream);
    }
}

/// The streams as the NIT's sections have them: what an older version said is forgotten.
void SiDatabase::renewNetworkStreams() {
    for (auto stream = network.begin(); stream != network.end();) {
        stream->second.descriptors.clear();
        stream->second.listed.clear();
        stream = stream->second.sdt.sections.empty() ? network.erase(stream) : std::next(stream);
    }
    for (const auto& entry : nit.sections) {
        std::string error;
        if (const std::optional<si::Nit> part = si::parseNit(entry.second, error)) {
            addNetworkStreams(*part);
        }
    }
}

std::vector<Channel> SiDatabase::otherChannels() const {
    std::vector<Channel> list;
    for (const auto& [key, stream] : network) {
        if (key.second != transportStreamId) {
            Names named = stream.names;
            for (const std::uint16_t serviceId : stream.listed) {
                named.try_emplace(serviceId);
            }
            for (const auto& [serviceId, name] : named) {
                list.push_back({key.first, key.second, serviceId, 0, name});
            }
        }
    }
    return list;
}

/// The network's identifier is taken from it where no SDT tells it.
void SiDatabase::onNitSection(si::Bytes section) {
    if (!isCurrent(section, kNitActualTableId) || file(nit, section) == Update::none) {
        return;
    }
    std::string error;
    const std::optional<si::Nit> parsed = si::parseNit(section, error);
    if (!parsed) {
        ++unreadable_;
        return;
    }
    if (isWhole(nit, section)) {
        renewNetworkStreams();
    } else {
        addNetworkStreams(*parsed);
    }
    bool named = false;
    for (const si::Nit::TransportStream& stream : parsed->transportStreams) {
        Multiplex* const multiplex = multiplexOf(stream.transportStreamId);
        if (multiplex != nullptr && !multiplex->originalNetworkId) {
            multiplex->originalNetworkId = stream.originalNetworkId;
            named = named || stream.transportStreamId == transportStreamId;
        }
    }
    if (named) {
        nameChannels();
    }
}

bool SiDatabase::hasDeliverySystem(const Channel& channel, const std::string& descriptor) const {
    const auto isIt = [&descriptor](const si::Descriptor& known) {
        std::string bytes = {static_cast<char>(known.tag), static_cast<char>(known.bytes.size())};
        bytes.append(known.bytes.begin(), known.bytes.end());
        return bytes == descriptor;
    };
    return std::any_of(network.begin(), network.end(), [&](const auto& stream) {
        const si::Descriptors& all = stream.second.descriptors;
        return stream.first.first == channel.originalNetworkId.value_or(stream.first.first) &&
               stream.first.second == channel.transportStreamId && std::any_of(all.begin(), all.end(), isIt);
    });
}

void SiDatabase::onEitSection(si::Bytes section) {
    constexpr std::size_t kNetworkAt = 10;
    constexpr std::size_t kShortest = 18;
    if (!isCurrent(section, kEitPresentFollowingActualTableId) || section.size < kShortest || !transportStreamId) {
        return;
    }
    // "Actual" says whose table it is; recorders that rewrite the PAT leave another transport_stream_id here.
    const auto service = services.find(si::tableIdExtension(section));
    if (service == services.end()) {
        return;
    }
    Multiplex* const multiplex = multiplexOf(*transportStreamId);
    if (multiplex != nullptr && !multiplex->originalNetworkId) {
        multiplex->originalNetworkId = wordAt(section, kNetworkAt);
        nameChannels();
    }
    const Update update = fileByNumber(service->second.eit, section);
    if (update != Update::none) {
        listener.onEit(*this, service->first, {section.data, section.data + section.size}, update == Update::changed);
    }
}

void SiDatabase::onPmtSection(std::uint16_t serviceId, si::Bytes section) {
    if (!isCurrent(section, kPmtTableId) || si::tableIdExtension(section) != serviceId) {
        return;
    }
    std::string error;
    const std::optional<si::Pmt> parsed = si::parsePmt(section, error);
    if (!parsed) {
        ++unreadable_;
        return;
    }
    const Update update = file(services[serviceId].pmt, section);
    if (update != Update::none) {
        followAit(serviceId, *parsed);
        listener.onPmt(*this, serviceId, {section.data, section.data + section.size}, update == Update::changed);
    }
}

/// Another PID, another AIT: what was stored goes with the PID.
void SiDatabase::followAit(std::uint16_t serviceId, const si::Pmt& pmt) {
    Service& service = services[serviceId];
    const bool wasSignalled = signalsHbbTv(service);
    service.listsHbbTv = si::listsHbbTvAit(pmt);
    std::vector<std::uint16_t> pids = si::hbbtvAitPids(pmt);
    if (pids != service.aitPids) {
        service.aitPids = std::move(pids);
        subscribeToAits(serviceId, service);
    }
    if (wasSignalled != signalsHbbTv(service)) {
        listener.onAitSignalled(*this, serviceId, !wasSignalled);
    }
}

void SiDatabase::subscribeToAits(std::uint16_t serviceId, Service& service) {
    for (const Demux::Subscription subscription : service.aitSubscriptions) {
        demux.unsubscribe(subscription);
    }
    service.aitSubscriptions.clear();
    service.aits.clear();
    for (const std::uint16_t pid : service.aitPids) {
        service.aitSubscriptions.push_back(
            demux.subscribe(pid, [this, serviceId, pid](si::Bytes section) { onAitSection(serviceId, pid, section); }));
    }
}

/// An application_type with test_application_flag is another one: what is broadcast for tests is not for viewers.
void SiDatabase::onAitSection(std::uint16_t serviceId, std::uint16_t pid, si::Bytes section) {
    if (!isCurrent(section, kAitTableId) || si::tableIdExtension(section) != si::kApplicationTypeHbbTv) {
        return;
    }
    Service& service = services[serviceId];
    const bool wasSignalled = signalsHbbTv(service);
    const Update update = file(service.aits[pid], section);
    if (!wasSignalled) {
        listener.onAitSignalled(*this, serviceId, true);
    }
    if (update != Update::none) {
        listener.onAit(*this, serviceId, {section.data, section.data + section.size}, update == Update::changed);
    }
}

}  // namespace broadcast
