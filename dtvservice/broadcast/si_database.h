// SiDatabase: what a multiplex says of itself: its services by PAT and SDT, and of each the sections of its PMT, its
// EIT present/following and its HbbTV AIT, as they came. Told of changes only. Threads: one.   Blocks: never. Fails:
// never; sections that cannot be read are passed over and counted.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "demux.h"
#include "si/tables.h"

namespace broadcast {

struct Channel {
    std::optional<std::uint16_t> originalNetworkId;  ///< absent until SDT, NIT or EIT has told it
    std::uint16_t transportStreamId = 0;
    std::uint16_t serviceId = 0;
    std::uint16_t pmtPid = 0;
    std::string name;  ///< UTF-8; empty until an SDT has named it

    /// The original_network_id, or si::kUnknownNetworkId.
    std::uint16_t networkId() const { return originalNetworkId.value_or(si::kUnknownNetworkId); }
    /// "onid:tsid:sid" in decimal.
    std::string triplet() const;
};

using Section = std::vector<std::uint8_t>;

class SiDatabase;

/// Told on the feeding thread, by which database. `changed` tells a new version from the first.
class SiListener {
public:
    virtual ~SiListener() = default;
    virtual void onChannelList(const SiDatabase& of) = 0;
    virtual void onPmt(const SiDatabase& of, std::uint16_t serviceId, const Section& section, bool changed) = 0;
    virtual void onEit(const SiDatabase& of, std::uint16_t serviceId, const Section& section, bool changed) = 0;
    virtual void onAit(const SiDatabase& of, std::uint16_t serviceId, const Section& section, bool changed) = 0;
    /// What signalsHbbTv() says of the service has changed.
    virtual void onAitSignalled(const SiDatabase& /*of*/, std::uint16_t /*serviceId*/, bool /*signalled*/) {}
};

class SiDatabase {
public:
    /// Both must outlive the database.
    SiDatabase(Demux& newDemux, SiListener& newListener);
    ~SiDatabase();
    SiDatabase(const SiDatabase&) = delete;
    SiDatabase& operator=(const SiDatabase&) = delete;

    /// In the order of the PAT.
    const std::vector<Channel>& channels() const { return channels_; }
    const Channel* find(std::uint16_t serviceId) const;
    /// Whether the services' triplets are as whole as they will be: their network is known, or the PAT has come so
    /// often that no table is going to tell it.
    bool isIdentified() const;
    /// Services of other transport streams, by network, transport stream and service: those that the SDT (other) or the
    /// NIT's service lists name. They have no PMT PID.
    std::vector<Channel> otherChannels() const;
    /// The latest section; empty when none has come.
    Section pmt(std::uint16_t serviceId) const;
    /// Present, then following, as far as they have come.
    std::vector<Section> eit(std::uint16_t serviceId) const;
    /// The AIT's sections by PID, then by number, as far as they have come.
    std::vector<Section> ait(std::uint16_t serviceId) const;
    /// Whether the service has an HbbTV AIT: its PMT lists the application_type, or lists none and a section has come.
    bool signalsHbbTv(std::uint16_t serviceId) const;
    /// Whether the NIT (actual) gives the channel's transport stream a descriptor of exactly these bytes, tag and
    /// length included. A network that nothing has told yet is any.
    bool hasDeliverySystem(const Channel& channel, const std::string& descriptor) const;
    std::uint64_t unreadable() const { return unreadable_; }

private:
    /// Sections by number, of one version.
    struct SubTable {
        std::optional<std::uint8_t> version;
        std::map<std::uint8_t, Section> sections;
        bool changed = false;  ///< since its first version
    };
    enum class Update { none, first, changed };
    using Names = std::map<std::uint16_t, std::string>;  // by service_id
    /// What SDT and EIT "actual" say of a transport stream.
    struct Multiplex {
        SubTable sdt;
        std::optional<std::uint16_t> originalNetworkId;
        Names names;
    };
    struct Service {
        Demux::Subscription pmtSubscription = 0;
        SubTable pmt;
        SubTable eit;
        std::map<std::uint16_t, SubTable> aits;  // by PID: each has versions of its own
        std::vector<Demux::Subscription> aitSubscriptions;
        std::vector<std::uint16_t> aitPids;
        bool listsHbbTv = false;  // in the PMT
    };

    /// What NIT and SDT (other) say of a transport stream of the network.
    struct NetworkStream {
        SubTable sdt;
        si::Descriptors descriptors;     // of the NIT
        std::set<std::uint16_t> listed;  // by service_id, in the NIT's service lists
        Names names;                     // of the SDT
    };

    static Update file(SubTable& table, si::Bytes section);
    static Update fileByNumber(SubTable& table, si::Bytes section);
    static bool isWhole(const SubTable& table, si::Bytes latest);
    static void takeNames(const SubTable& sdt, si::Bytes section, const si::Sdt& parsed, Names& names);
    void onOtherSdtSection(si::Bytes section);
    void addNetworkStream(const si::Nit::TransportStream& stream);
    void addNetworkStreams(const si::Nit& part);
    void renewNetworkStreams();
    NetworkStream* networkStream(std::uint16_t onid, std::uint16_t transportStream);
    Multiplex* multiplexOf(std::uint16_t transportStream);
    void onPatSection(si::Bytes section);
    void onRepeatedPatSection();
    void onSdtSection(si::Bytes section);
    void onNitSection(si::Bytes section);
    void onEitSection(si::Bytes section);
    void onPmtSection(std::uint16_t serviceId, si::Bytes section);
    void onAitSection(std::uint16_t serviceId, std::uint16_t pid, si::Bytes section);
    void applyPat();
    void dropService(Service& service);
    static bool signalsHbbTv(const Service& service);
    void subscribeToAits(std::uint16_t serviceId, Service& service);
    void followAit(std::uint16_t serviceId, const si::Pmt& pmt);
    void nameChannels();

    Demux& demux;
    SiListener& listener;
    std::vector<Demux::Subscription> subscriptions;
    SubTable pat;
    std::uint64_t repeatedPatSections = 0;
    SubTable nit;
    std::optional<std::uint16_t> transportStreamId;
    std::vector<Channel> channels_;
    std::map<std::uint16_t, Multiplex> multiplexes;  // by transport_stream_id: an SDT may come before the PAT
    std::map<std::pair<std::uint16_t, std::uint16_t>, NetworkStream> network;  // by network and transport stream
    std::map<std::uint16_t, Service> services;
    std::uint64_t unreadable_ = 0;
};

}  // namespace broadcast
