// SiDatabase: the tables of a multiplex. It combines the table classes: the services from PAT and SDT, and for each
// service the original sections of its PMT, EIT present/following and HbbTV AIT. An AddedApplication takes the place of
// all that the broadcast has of HbbTV.
// Threads: one.
// Blocks:  never.
// Fails:   never; malformed sections are ignored.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "added_application.h"
#include "ait_table.h"
#include "channel.h"
#include "eit_table.h"
#include "network_table.h"
#include "pat_table.h"
#include "pmt_table.h"
#include "sdt_table.h"

namespace broadcast {

class SiDatabase;

/// Gets the changes of a database, on the thread that feeds packets. A section that repeats is not a change. `changed`
/// is false for the first version of a table and true for later ones.
class SiListener {
public:
    virtual ~SiListener() = default;
    virtual void onChannelList(const SiDatabase& of) = 0;
    virtual void onPmt(const SiDatabase& of, std::uint16_t serviceId, const Section& section, bool changed) = 0;
    virtual void onEit(const SiDatabase& of, std::uint16_t serviceId, const Section& section, bool changed) = 0;
    virtual void onAit(const SiDatabase& of, std::uint16_t serviceId, const Section& section, bool changed) = 0;
    /// The result of signalsHbbTv() for the service has changed.
    virtual void onAitSignalled(const SiDatabase& /*of*/, std::uint16_t /*serviceId*/, bool /*signalled*/) {}
    /// The service's PMT has no room for the signalling of the added application, so it stays as it is.
    virtual void onPmtWithoutRoom(const SiDatabase& /*of*/, std::uint16_t /*serviceId*/) {}
};

class SiDatabase {
public:
    /// All must outlive the database. Null adds no application.
    SiDatabase(SectionDemux& newDemux, SiListener& newListener, const AddedApplication* newAdded = nullptr);
    SiDatabase(const SiDatabase&) = delete;
    SiDatabase& operator=(const SiDatabase&) = delete;

    /// In the order of the PAT. At most kMostServices.
    const std::vector<Channel>& channels() const { return channels_; }
    /// The services that the PAT lists beyond them.
    std::size_t passedOver() const { return pat.passedOver(); }
    const Channel* find(std::uint16_t serviceId) const;
    /// Whether the services' triplets are final: the network is known, or the PAT has been repeated so often that no
    /// table is likely to give it any more.
    bool isIdentified() const;
    /// Services of other transport streams, from the SDT (other) and the NIT's service lists, in the order of network,
    /// transport stream and service. They have no PMT PID.
    std::vector<Channel> otherChannels() const { return network.otherChannels(pat.transportStreamId()); }
    /// Whether the SDT (other) or the NIT lists this service of another transport stream.
    bool announces(std::uint32_t networkId, std::uint32_t transportStream, std::uint32_t serviceId) const {
        return transportStream != pat.transportStreamId() && network.lists(networkId, transportStream, serviceId);
    }
    /// The latest section, with the added application; empty if none has arrived.
    Section pmt(std::uint16_t serviceId) const;
    /// Its fields; null if none has arrived.
    const si::Pmt* pmtFields(std::uint16_t serviceId) const;
    /// The sections that have arrived: present, then following.
    std::vector<Section> eit(std::uint16_t serviceId) const;
    /// The sections that have arrived, in the order of PID and section_number; or that of the added application.
    std::vector<Section> ait(std::uint16_t serviceId) const;
    /// Whether the service has an HbbTV AIT: its PMT lists HbbTV's application_type or, if it does not, an HbbTV AIT
    /// section has arrived.
    bool signalsHbbTv(std::uint16_t serviceId) const;
    /// Whether the NIT (actual) has a descriptor with exactly these bytes, tag and length included, for the channel's
    /// transport stream. A channel whose network is still unknown matches any network.
    bool hasDeliverySystem(const Channel& channel, const std::string& descriptor) const {
        return network.hasDeliverySystem(channel, descriptor);
    }

private:
    /// The tables of one service.
    struct Service {
        Service(SiDatabase& database, const Channel& channel);
        AitTable ait;
        EitTable eit;
        PmtTable pmt;
        std::optional<si::Pmt> pmtFields;
        Section toldPmt;         // with the added application
        bool toldAdded = false;  // the added application's AIT has been told
    };

    const Service* serviceOf(std::uint16_t serviceId) const;
    void onPatSection(si::Bytes section);
    void onNitSection(si::Bytes section);
    void onSdtSection(si::Bytes section);
    void onEitSection(si::Bytes section);
    void onPmtSection(std::uint16_t pid, si::Bytes section);
    void addApplication(Service& service, const si::Pmt& pmt, si::Bytes section, Update update);
    void followServices();
    void followPmtPids();
    bool isListed(std::uint16_t serviceId, std::uint16_t pmtPid) const;
    void nameChannels();

    SectionDemux& demux;
    SiListener& listener;
    const AddedApplication* added;
    PatTable pat;
    SdtTable sdt;
    NetworkTable network;
    std::map<std::uint16_t, Service> services;
    std::vector<Channel> channels_;
    std::map<std::uint16_t, std::size_t> places;  // in channels_, by service_id: the first one that has it
    std::vector<SectionSubscription> subscriptions;
    std::map<std::uint16_t, SectionSubscription> pmtPids;  // several services may have their PMTs on one PID
};

}  // namespace broadcast
