// Core: what all subjects of the service share: the loop, the browsers, the multiplexes, and the presented service.
// It brings commands and operators' requests to the rooms that have them, and tells every room what happens, in the
// order in which the rooms were added. It knows none of them by name.
// Threads: the loop's, but for the commands' arrival.
// Blocks:  never.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "commands.h"
#include "operator_requests.h"
#include "room.h"

namespace dtvservice {

class Core : private broadcast::SiListener {
public:
    /// The loop must outlive the core, and run none of its tasks afterwards.
    explicit Core(EventLoop& newLoop);

    EventLoop& loop;
    Browsers browsers;
    Multiplexes multiplexes;
    Commands commands;
    OperatorRequests requests;

    /// Rooms come before the multiplexes, and at least one of those before commands and packets.
    void add(std::unique_ptr<Room> room) { rooms.push_back(std::move(room)); }
    /// One more multiplex. The first is received until a service of another is presented.
    Multiplex& addMultiplex();

    /// The one that is received, as with one tuner.
    Multiplex& received() const { return *received_; }
    /// Null while nothing is presented.
    const broadcast::Channel* presented() const;

    /// Presents a service: rooms are told, browsers not yet.
    void present(Multiplex& multiplex, const broadcast::Channel& channel);
    /// What is known of the presented service, part by part and of each part room by room.
    void tellPresented(const Audience& to);

private:
    void onChannelList(const broadcast::SiDatabase& of) override;
    void onPmt(const broadcast::SiDatabase& of, std::uint16_t serviceId, const broadcast::Section& section,
               bool changed) override;
    void onEit(const broadcast::SiDatabase& of, std::uint16_t serviceId, const broadcast::Section& section,
               bool changed) override;
    void onAit(const broadcast::SiDatabase& of, std::uint16_t serviceId, const broadcast::Section& section,
               bool changed) override;
    void onAitSignalled(const broadcast::SiDatabase& of, std::uint16_t serviceId, bool signalled) override;

    const broadcast::Channel* presentedOf(const broadcast::SiDatabase& of, std::uint16_t serviceId) const;
    void onBrowserConnected(Browser browser);
    void onBrowserGone(Browser browser);
    nlohmann::json describeBrowsers(const nlohmann::json& request);
    nlohmann::json countPackets(const nlohmann::json& request);
    /// One call of every room.
    template <typename Call>
    void toRooms(Call call) {
        for (const std::unique_ptr<Room>& room : rooms) {
            call(*room);
        }
    }

    Multiplex* received_ = nullptr;
    std::optional<std::uint16_t> presentedId;  // service_id, in the multiplex that is received
    std::vector<std::unique_ptr<Room>> rooms;  // they end before the multiplexes that they listen to
};

}  // namespace dtvservice
