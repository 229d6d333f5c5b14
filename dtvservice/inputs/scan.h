// Scan: collects the tables of a file as fast as the file can be read.
// Threads: one.
// Blocks:  the constructor until the file has been read.
// Fails:   a read error ends the file early; its error() gives the reason.
#pragma once

#include "packet_file.h"
#include "si_database.h"

namespace dtvservice {

class Scan final : broadcast::SiListener {
public:
    /// So many packets usually have all tables that announce others: 4 s of 40 Mbit/s.
    static constexpr std::uint64_t kLookAhead = 100000;

    explicit Scan(PacketFile& file, std::uint64_t lookAhead = kLookAhead);

    const broadcast::SiDatabase& tables() const { return database; }
    /// Packets that have been read, each as often as it was read.
    std::uint64_t packets() const { return packets_; }

private:
    void onChannelList(const broadcast::SiDatabase&) override { ++lists; }
    void onPmt(const broadcast::SiDatabase&, std::uint16_t, const broadcast::Section&, bool) override {}
    void onEit(const broadcast::SiDatabase&, std::uint16_t, const broadcast::Section&, bool) override {}
    void onAit(const broadcast::SiDatabase&, std::uint16_t, const broadcast::Section&, bool) override {}

    void read(PacketFile& file, std::uint64_t most);
    std::uint64_t announcements() const { return lists + demux.subscriptions(); }

    std::uint64_t lists = 0;
    std::uint64_t packets_ = 0;
    broadcast::SectionDemux demux;
    broadcast::SiDatabase database{demux, *this};
};

}  // namespace dtvservice
