// Multiplexes: the inputs' packets, and what they say of services: the channel list spans them all.
// Threads: the loop's.   Blocks: never.   Fails: never; what is not found is null or nothing.
#pragma once

#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "demux.h"
#include "si_database.h"

namespace dtvservice {

struct Multiplex {
    /// The listener must outlive the multiplex.
    explicit Multiplex(broadcast::SiListener& listener) : si(demux, listener) {}

    broadcast::Demux demux;
    broadcast::SiDatabase si;
};

/// original_network_id, transport_stream_id and service_id, as a browser asks for them.
struct Triplet {
    std::uint32_t onid;
    std::uint32_t tsid;
    std::uint32_t sid;
};
/// A network that no table has told yet is any.
bool matches(const broadcast::Channel& channel, const Triplet& wanted);

class Multiplexes {
public:
    /// It stays where it is.
    Multiplex& add(broadcast::SiListener& listener) { return list.emplace_back(listener); }
    auto begin() { return list.begin(); }
    auto end() { return list.end(); }
    auto begin() const { return list.begin(); }
    auto end() const { return list.end(); }
    /// The one with that database, which is one of them.
    Multiplex& of(const broadcast::SiDatabase& si);

    struct Found {
        Multiplex* multiplex = nullptr;
        const broadcast::Channel* channel = nullptr;
    };
    /// The first service that the condition holds for; null where there is none.
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
    /// Services that a multiplex tells of and none has: each once, under the first name that is told.
    std::vector<broadcast::Channel> channelsWithoutInput() const;
    /// Of a triplet that find() does not find.
    std::string whyNotReceived(const std::string& triplet) const;

private:
    bool isReceived(const broadcast::Channel& channel) const;

    std::deque<Multiplex> list;
};

}  // namespace dtvservice
