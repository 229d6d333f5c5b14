// Multiplexes: the demultiplexer and the tables of every input. Searches for a service cover all inputs.
// Threads: the loop's.
// Blocks:  never.
// Fails:   never; a search without a result gives null or an empty list.
#pragma once

#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "demux.h"
#include "input_report.h"
#include "si_database.h"

namespace dtvservice {

struct Multiplex {
    /// Both must outlive the multiplex. Null adds no application.
    explicit Multiplex(broadcast::SiListener& listener, const broadcast::AddedApplication* added = nullptr)
        : si(demux, listener, added) {}

    broadcast::Demux demux;
    broadcast::SiDatabase si;
    InputReport report;
};

/// original_network_id, transport_stream_id and service_id of the service that a browser asks for.
struct Triplet {
    std::uint32_t onid;
    std::uint32_t tsid;
    std::uint32_t sid;
};
/// "onid:tsid:sid" in decimal.
std::string textOf(const Triplet& triplet);
/// A channel whose network is still unknown matches any network.
bool matches(const broadcast::Channel& channel, const Triplet& wanted);

class Multiplexes {
public:
    /// The reference stays valid: multiplexes are never moved or removed.
    Multiplex& add(broadcast::SiListener& listener, const broadcast::AddedApplication* added = nullptr) {
        return list.emplace_back(listener, added);
    }
    auto begin() { return list.begin(); }
    auto end() { return list.end(); }
    auto begin() const { return list.begin(); }
    auto end() const { return list.end(); }
    /// The multiplex that owns the database. There must be one.
    Multiplex& of(const broadcast::SiDatabase& si);
    /// The operator's number of the input: 1 for the first.
    std::size_t numberOf(const Multiplex& multiplex) const;

    struct Found {
        Multiplex* multiplex = nullptr;
        const broadcast::Channel* channel = nullptr;
    };
    /// The first service that meets the condition; null if there is none.
    template <typename Condition>
    Found find(Condition isWanted) {
        for (Multiplex& multiplex : list) {
            for (const broadcast::Channel& channel : multiplex.si.channels()) {
                if (isWanted(channel)) {
                    return {&multiplex, &channel};
                }
            }
        }
        return {};
    }
    /// Services that the tables of a multiplex announce but that no input carries. Each is listed once, with the first
    /// name found.
    std::vector<broadcast::Channel> channelsWithoutInput() const;
    /// The reason why find() has no service with this triplet.
    std::string whyNotReceived(const Triplet& wanted) const;

private:
    bool isReceived(const broadcast::Channel& channel) const;

    std::deque<Multiplex> list;
};

}  // namespace dtvservice
