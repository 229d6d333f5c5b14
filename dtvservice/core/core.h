// Core: what all rooms share: the loop, the browsers, the multiplexes, and the presented service. It passes each
// command and each operator's request to the room that handles it. It notifies all rooms of changes, in the order in
// which they were added. It does not know the individual rooms.
// Threads: the loop's; only commands arrive on the transport's threads.
// Blocks:  never.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "commands.h"
#include "operator_requests.h"
#include "repeated_messages.h"
#include "room.h"

namespace dtvservice {

class Core : private broadcast::SiListener {
public:
    /// The loop must outlive the core, and run no task after the core ends.
    explicit Core(EventLoop& newLoop);

    EventLoop& loop;
    BusTap tap;
    Browsers browsers{tap};
    /// What every service gets in place of its own applications. Set it before the multiplexes are added.
    std::optional<broadcast::AddedApplication> application;
    Multiplexes multiplexes;
    Commands commands;
    OperatorRequests requests;
    /// Whether a section for a filter is lost on its way to the browser's queue. Null loses none.
    std::function<bool(Browser browser, const std::string& filter)> losesSection;

    /// Add all rooms first, then the multiplexes. Commands and packets need at least one multiplex.
    void add(std::unique_ptr<Room> room) { rooms.push_back(std::move(room)); }
    /// Shows the monitors of the bus that a command of this type is not done.
    template <typename Command>
    void refuse(Browser asker, const std::string& why) {
        tap.refused(bus::Direction::toService, asker, Command::header().messageId, why);
    }
    /// Adds a multiplex. The first one is received until a service of another one is presented.
    Multiplex& addMultiplex();

    /// The multiplex that is received: there is one tuner.
    Multiplex& received() const { return *received_; }
    /// Whether the calling function may write a log line about what the multiplex broadcasts now.
    bool mayTell(const Multiplex& multiplex, const char* function = __builtin_FUNCTION()) {
        return inputLines.mayTell("input " + std::to_string(multiplexes.numberOf(multiplex)), function);
    }
    /// Null while nothing is presented.
    const broadcast::Channel* presented() const;

    /// Presents a service and notifies the rooms. Call tellPresented() to notify the browsers.
    void present(Multiplex& multiplex, const broadcast::Channel& channel);
    /// Sends all that is known of the presented service: for each Part, every room sends its share.
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
    void onPmtWithoutRoom(const broadcast::SiDatabase& of, std::uint16_t serviceId) override;

    void tellNumberOfServices(const broadcast::SiDatabase& of);
    const broadcast::Channel* presentedOf(const broadcast::SiDatabase& of, std::uint16_t serviceId) const;
    void onBrowserConnected(Browser browser);
    void onBrowserGone(Browser browser);
    nlohmann::json describeBrowsers(const nlohmann::json& request);
    /// Calls every room, in order.
    template <typename Call>
    void toRooms(Call call) {
        for (const std::unique_ptr<Room>& room : rooms) {
            call(*room);
        }
    }

    Multiplex* received_ = nullptr;
    std::optional<std::uint16_t> presentedId;  // service_id, in the received multiplex
    LineLimits inputLines;
    RepeatedMessages messages;
    std::vector<std::unique_ptr<Room>> rooms;  // the last member: rooms use the multiplexes until they are destroyed
};

}  // namespace dtvservice
