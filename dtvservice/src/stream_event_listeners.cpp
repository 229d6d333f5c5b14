// Following stream descriptor sections.
#include "stream_event_listeners.h"

#include <algorithm>
#include <charconv>

namespace dtvservice {

using si::StreamEvent;

namespace {

std::optional<std::uint16_t> eventIdOf(const std::string& name) {
    std::uint16_t id = 0;
    const auto [end, failure] = std::from_chars(name.data(), name.data() + name.size(), id);
    return failure == std::errc() && end == name.data() + name.size() ? std::optional<std::uint16_t>(id) : std::nullopt;
}

}  // namespace

StreamEventListeners::~StreamEventListeners() {
    rest();
}

void StreamEventListeners::rest() {
    for (Listener& listener : listeners) {
        unsubscribe(listener);
    }
    pmt.reset();
}

/// The versions that were signalled stay: a service that comes back does not signal them again.
void StreamEventListeners::follow(broadcast::Demux& newDemux, const si::Pmt& newPmt) {
    rest();
    demux = &newDemux;
    pmt = newPmt;
    for (Listener& listener : listeners) {
        subscribe(listener);
    }
}

StreamEventListeners::Result StreamEventListeners::add(Peer browser, const Target& target) {
    const std::optional<std::uint16_t> id = eventIdOf(target.eventName);
    if (!id) {
        return Result::unknownName;
    }
    listeners.push_back({browser, target, *id, 0, {}});
    if (!subscribe(listeners.back())) {
        listeners.pop_back();
        return Result::noSuchComponent;
    }
    return Result::done;
}

StreamEventListeners::Result StreamEventListeners::remove(Peer browser, const Target& target) {
    for (auto listener = listeners.begin(); listener != listeners.end(); ++listener) {
        if (listener->browser == browser && listener->target == target) {
            unsubscribe(*listener);
            listeners.erase(listener);
            return Result::done;
        }
    }
    return Result::noSuchListener;
}

void StreamEventListeners::forget(Peer browser) {
    listeners.remove_if([this, browser](Listener& listener) {
        if (listener.browser == browser) {
            unsubscribe(listener);
        }
        return listener.browser == browser;
    });
}

bool StreamEventListeners::subscribe(Listener& listener) {
    if (!pmt || pmt->serviceId != listener.target.sid) {
        return false;
    }
    for (const si::Pmt::Stream& stream : pmt->streams) {
        const std::optional<std::uint8_t> tag = si::componentTag(stream);
        if (tag && *tag == listener.target.componentTag) {
            listener.subscription =
                demux->subscribe(stream.pid, [this, &listener](si::Bytes section) { onSection(listener, section); });
            return true;
        }
    }
    return false;
}

void StreamEventListeners::unsubscribe(Listener& listener) {
    if (listener.subscription != 0) {
        demux->unsubscribe(listener.subscription);
        listener.subscription = 0;
    }
}

/// A version signals once, at first sight.
void StreamEventListeners::onSection(Listener& listener, si::Bytes section) {
    for (const StreamEvent& event : si::streamEvents(section)) {
        if (event.id != listener.eventId) {
            continue;
        }
        const auto extension = si::tableIdExtension(section);
        const std::uint8_t version = si::sectionVersion(section);
        const auto [known, isNew] = listener.versions.try_emplace(extension, version);
        if (isNew || known->second != version) {
            known->second = version;
            sink(listener.browser, listener.target, event);
        }
    }
}

}  // namespace dtvservice
