// StreamEventListeners: browsers' listeners on stream events of the presented service.
// Threads: the loop's.   Blocks: never.   Fails:   a listener on what is not there is told so by the result.
#pragma once

#include <functional>
#include <list>
#include <map>
#include <optional>
#include <string>

#include "demux.h"
#include "si/stream_event.h"
#include "si/tables.h"

namespace dtvservice {

class StreamEventListeners {
public:
    using Peer = std::uint32_t;
    /// What a listener is for, as a browser names it.
    struct Target {
        std::uint16_t onid;
        std::uint16_t tsid;
        std::uint16_t sid;
        std::int16_t componentTag;
        std::string objectPath;
        std::string eventName;  ///< the event's identifier in decimal

        bool operator==(const Target& other) const {
            return onid == other.onid && tsid == other.tsid && sid == other.sid && componentTag == other.componentTag &&
                   objectPath == other.objectPath && eventName == other.eventName;
        }
    };
    enum class Result : std::uint32_t { done = 0, noSuchComponent = 1, unknownName = 2, noSuchListener = 3 };
    using Sink = std::function<void(Peer browser, const Target& target, const si::StreamEvent& event)>;

    explicit StreamEventListeners(Sink newSink) : sink(std::move(newSink)) {}
    StreamEventListeners(const StreamEventListeners&) = delete;
    StreamEventListeners& operator=(const StreamEventListeners&) = delete;
    ~StreamEventListeners();

    /// The presented service's streams from now on. Listeners of other services rest until theirs is presented again.
    /// The demultiplexer must outlive this.
    void follow(broadcast::Demux& newDemux, const si::Pmt& newPmt);
    /// Nothing is presented, or nothing is known of it yet: all listeners rest.
    void rest();
    Result add(Peer browser, const Target& target);
    Result remove(Peer browser, const Target& target);
    void forget(Peer browser);

private:
    struct Listener {
        Peer browser;
        Target target;
        std::uint16_t eventId;
        broadcast::Demux::Subscription subscription = 0;
        std::map<std::uint16_t, std::uint8_t> versions;  // last signalled, by table_id_extension
    };

    bool subscribe(Listener& listener);
    void unsubscribe(Listener& listener);
    void onSection(Listener& listener, si::Bytes section);

    Sink sink;
    broadcast::Demux* demux = nullptr;
    std::optional<si::Pmt> pmt;  // of the presented service
    std::list<Listener> listeners;
};

}  // namespace dtvservice
