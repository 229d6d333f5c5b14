// Opens and closes filters.
#include "filter.h"

#include "for_life.h"

namespace dvbshell {

/// Copies sections into a queue. Both live as long as the process, because a section may arrive at any time.
class Filter::Client final : public velmora::dtv::SectionFilterClient {
public:
    Client(EventQueue& newQueue, const char* newKey) : queue(newQueue), key(newKey) {}

    void onSectionData(const std::string&, unsigned int number, const unsigned char* data,
                       unsigned int length) override {
        Event event;
        event.kind = EventKind::filtered;
        event.name = "onSectionData";
        event.values = {namedValue(key, number)};
        event.section.assign(reinterpret_cast<const char*>(data), length);
        queue.put(std::move(event));
    }

private:
    EventQueue& queue;
    const char* key;  // the name of the number that comes with a section
};

namespace {

const unsigned char* bytesOf(const std::string& text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

}  // namespace

Pattern tablePattern(std::uint8_t tableId) {
    return {std::string(1, static_cast<char>(tableId)), "\xFF"};
}

Filter::Filter(Session& newSession, EventQueue& queue, unsigned int pid, const Pattern& pattern, Owner newOwner)
    : session(newSession),
      client(forLife(new Client(queue, "pid"))),
      name(session.filters.generateSessionName()),
      what("filter on PID " + std::to_string(pid)),
      ofPmt(false),
      owner(newOwner) {
    opened = session.filters.startSection(&client, name, pid, bytesOf(pattern.match), bytesOf(pattern.mask),
                                          static_cast<int>(pattern.match.size()));
    if (opened && owner == Owner::user) {
        session.connection.open(what);
    }
}

Filter::Filter(Session& newSession, EventQueue& queue, unsigned int serviceId)
    : session(newSession),
      client(forLife(new Client(queue, "sid"))),
      name(session.filters.generateSessionName()),
      what("PMT request of service " + std::to_string(serviceId)),
      ofPmt(true) {
    opened = session.filters.startPMTRequest(&client, name, serviceId) == 0;
    if (opened) {
        session.connection.open(what);
    }
}

/// The library waits ten seconds for the confirmation of a service that has gone, so ask before.
Filter::~Filter() {
    if (owner == Owner::user) {
        session.connection.close(what);
    }
    if (ofPmt) {
        session.filters.stopPMTRequest(&client, name);
    } else if (session.connection.isThere()) {
        session.filters.stopSection(&client, name);
    }
}

EventQueue& newSectionQueue() {
    return forLife(new EventQueue);
}

}  // namespace dvbshell
