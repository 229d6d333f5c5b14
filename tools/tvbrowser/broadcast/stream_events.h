// StreamEvents: listeners of the presented service's stream events (TS 102 796, clause 8.2.1; TS 102 809, clause 8). A
// listener names the event by its number and the component_tag of its stream, or by the name in a stream event object.
// It belongs to the service that is presented when it is added: it rests while another one is presented.
//
// An event is signalled once for each version of its section, as soon as the section comes, whatever its eventNPT.
// Threads: one.
// Blocks:  never.
// Fails:   a listener whose event or stream the broadcast does not have is answered with the status "error" and removed.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "event_names.h"
#include "si/stream_event.h"

namespace tvbrowser {

class StreamEvents {
public:
    static constexpr std::size_t kMostListeners = 1000;

    using Number = std::uint64_t;  // the caller's
    struct Target {
        std::optional<std::uint8_t> componentTag;
        std::optional<std::uint16_t> eventId;  ///< without it, by object and name
        std::string object;
        std::string name;
    };

    /// `newPost`: what is wrong with a listener is told later, not inside of add().
    StreamEvents(SectionFilters& newFilters, Post newPost, Emit newEmit);

    /// Replaces a listener of the same number. False when there are too many.
    bool add(Number number, const Target& target);
    bool remove(Number number);
    /// A service is presented, also the same one again; its PMT follows.
    void setService(const si::Triplet& newService);
    void setPmt(const si::Pmt& newPmt);
    /// The broadcast begins anew: its versions say nothing about those of before.
    void forgetVersions();

private:
    struct Listener {
        Target target;
        std::optional<si::Triplet> service;                   // absent: the first that is presented
        std::optional<EventNames::Answer> object;             // by name, once it is found
        std::optional<std::uint16_t> pid;                     // of its stream, while that is filtered
        std::map<std::uint16_t, std::uint8_t> versions = {};  // of sections, by table_id_extension
    };

    bool isHere(const Listener& listener) const { return pmt && listener.service == service; }
    void resolveSoon();
    void resolve();
    bool find(Listener& listener);
    std::optional<std::uint16_t> pidOf(const Listener& listener) const;
    void follow();
    void onSection(std::uint16_t pid, si::Bytes section);
    void signal(Number number, Listener& listener, const si::StreamEvent& event, si::Bytes section);
    void tell(Number number, const Listener& listener, const char* status, const std::string& data);

    SectionFilters& filters;
    const Post post;
    const Emit emit;
    EventNames objects;
    std::optional<si::Triplet> service;
    std::optional<si::Pmt> pmt;
    std::map<Number, Listener> listeners;
    std::map<std::uint16_t, SectionFilters::Id> open;  // by PID
    bool resolves = false;                             // a task is on its way
};

}  // namespace tvbrowser
