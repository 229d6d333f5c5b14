// Notifies the rooms.
#include "core.h"

#include <nlohmann/json.hpp>

#include "input_answers.h"

namespace dtvservice {

using broadcast::Channel;
using broadcast::Section;
using broadcast::SiDatabase;
using nlohmann::json;

Core::Core(EventLoop& newLoop)
    : loop(newLoop),
      commands(
          newLoop, tap, [this](Browser browser) { onBrowserConnected(browser); },
          [this](Browser browser) { onBrowserGone(browser); }) {
    requests.add("status", calls(*this, &Core::describeBrowsers));
    requests.add("statistics", calls(*this, &Core::describeBrowsers));
    requests.add("status", [this](const json&) { return describeInputs(multiplexes); });
    requests.add("channels", [this](const json&) { return describeInputs(multiplexes); });
    requests.add("statistics", [this](const json&) { return countInputs(multiplexes, EventLoop::Clock::now()); });
}

Multiplex& Core::addMultiplex() {
    Multiplex& added =
        multiplexes.add(static_cast<broadcast::SiListener&>(*this), application ? &*application : nullptr);
    if (received_ == nullptr) {
        received_ = &added;
        toRooms([&](Room& room) { room.multiplexReceived(added); });
    }
    return added;
}

const Channel* Core::presented() const {
    return presentedId ? received_->si.find(*presentedId) : nullptr;
}

/// The channel, if this service of this multiplex is presented; else null.
const Channel* Core::presentedOf(const SiDatabase& of, std::uint16_t serviceId) const {
    return &of == &received_->si && presentedId == serviceId ? of.find(serviceId) : nullptr;
}

void Core::present(Multiplex& multiplex, const Channel& channel) {
    received_ = &multiplex;
    toRooms([&](Room& room) { room.multiplexReceived(multiplex); });
    presentedId = channel.serviceId;
    toRooms([&](Room& room) { room.servicePresented(channel); });
}

void Core::tellPresented(const Audience& to) {
    const Channel* const channel = presented();
    for (const Part part : {Part::pmt, Part::eit, Part::ait}) {
        toRooms([&](Room& room) { room.tell(part, *channel, to); });
    }
}

void Core::onBrowserConnected(Browser browser) {
    browsers.add(browser);
    toRooms([&](Room& room) { room.browserConnected(browser); });
}

void Core::onBrowserGone(Browser browser) {
    toRooms([&](Room& room) { room.browserGone(browser); });
    browsers.remove(browser);
}

void Core::onChannelList(const SiDatabase& of) {
    tellNumberOfServices(of);
    if (&of == &received_->si && presentedId && presented() == nullptr) {
        presentedId.reset();
        toRooms([](Room& room) { room.serviceGone(); });
    }
    toRooms([&](Room& room) { room.channelListChanged(multiplexes.of(of)); });
}

void Core::tellNumberOfServices(const SiDatabase& of) {
    if (!mayTell(multiplexes.of(of))) {
        return;
    }
    const std::size_t followed = of.channels().size();
    const std::string text = of.passedOver() == 0
                                 ? std::to_string(followed) + " services"
                                 : "the PAT lists " + std::to_string(followed + of.passedOver()) +
                                       " services; the first " + std::to_string(followed) + " are followed";
    BLOG_TAGGED(blog::kOrdinary, "%s\n", text.c_str());
}

void Core::onPmt(const SiDatabase& of, std::uint16_t serviceId, const Section& section, bool changed) {
    // A room may present this service in pmtArrived(), which sends the PMT. Look first which service is presented, so
    // that pmtChanged() does not send it again.
    const Channel* const concerned = presentedOf(of, serviceId);
    toRooms([&](Room& room) { room.pmtArrived(multiplexes.of(of), serviceId, section); });
    if (concerned != nullptr) {
        toRooms([&](Room& room) { room.pmtChanged(*concerned, section, changed); });
    }
}

void Core::onEit(const SiDatabase& of, std::uint16_t serviceId, const Section& section, bool changed) {
    if (const Channel* const channel = presentedOf(of, serviceId)) {
        toRooms([&](Room& room) { room.eitChanged(*channel, section, changed); });
    }
}

void Core::onAit(const SiDatabase& of, std::uint16_t serviceId, const Section& section, bool) {
    if (const Channel* const channel = presentedOf(of, serviceId)) {
        toRooms([&](Room& room) { room.aitChanged(*channel, section); });
    }
}

void Core::onAitSignalled(const SiDatabase& of, std::uint16_t serviceId, bool) {
    if (const Channel* const channel = presentedOf(of, serviceId)) {
        toRooms([&](Room& room) { room.aitSignalled(*channel); });
    }
}

void Core::onPmtWithoutRoom(const SiDatabase& of, std::uint16_t serviceId) {
    const std::string service =
        std::to_string(serviceId) + " on input " + std::to_string(multiplexes.numberOf(multiplexes.of(of)));
    if (const auto line = messages.tell("the PMT of service " + service + " has no room for the added application")) {
        BLOG_TAGGED(blog::kUnsupported, "%s\n", line->c_str());
    }
}

json Core::describeBrowsers(const json&) {
    return {{"browsers", browsers.all()}};
}

}  // namespace dtvservice
