// SiDatabase: what a multiplex says of itself: its services by PAT and SDT, and of each the sections of its PMT, its
// EIT present/following and its HbbTV AIT, as they came. Each table is a class of its own; this one brings them
// together. Threads: one. Blocks: never. Fails: never; sections that cannot be read are passed over.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "ait_table.h"
#include "channel.h"
#include "eit_table.h"
#include "network_table.h"
#include "pat_table.h"
#include "pmt_table.h"
#include "sdt_table.h"

namespace broadcast {

class SiDatabase;

/// Told on the feeding thread, by which database, of changes only. `changed` tells a change from the first.
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
    std::vector<Channel> otherChannels() const { return network.otherChannels(pat.transportStreamId()); }
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
    bool hasDeliverySystem(const Channel& channel, const std::string& descriptor) const {
        return network.hasDeliverySystem(channel, descriptor);
    }

private:
    /// The tables of one service.
    struct Service {
        Service(SiDatabase& database, const Channel& channel);
        AitTable ait;
        EitTable eit;
        PmtTable pmt;  // the last: its PMT decides on the AIT
    };

    const Service* serviceOf(std::uint16_t serviceId) const;
    void onPatSection(si::Bytes section);
    void onNitSection(si::Bytes section);
    void onSdtSection(si::Bytes section);
    void onEitSection(si::Bytes section);
    void followServices();
    bool isListed(std::uint16_t serviceId, std::uint16_t pmtPid) const;
    void nameChannels();

    Demux& demux;
    SiListener& listener;
    PatTable pat;
    SdtTable sdt;
    NetworkTable network;
    std::map<std::uint16_t, Service> services;
    std::vector<Channel> channels_;
    std::vector<SectionSubscription> subscriptions;
};

}  // namespace broadcast
