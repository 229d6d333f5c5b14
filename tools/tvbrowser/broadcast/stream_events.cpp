// Finds the streams of events, and signals events.
#include "stream_events.h"

#include <algorithm>
#include <set>

namespace tvbrowser {

using State = EventNames::State;

StreamEvents::StreamEvents(SectionFilters& newFilters, Post newPost, Emit newEmit)
    : filters(newFilters),
      post(std::move(newPost)),
      emit(std::move(newEmit)),
      objects(newFilters, [this] { resolveSoon(); }) {}

bool StreamEvents::add(Number number, const Target& target) {
    if (listeners.size() >= kMostListeners && listeners.count(number) == 0) {
        return false;
    }
    listeners.insert_or_assign(number, Listener{target, service, std::nullopt, std::nullopt});
    resolveSoon();
    return true;
}

bool StreamEvents::remove(Number number) {
    const bool wasThere = listeners.erase(number) != 0;
    resolveSoon();
    return wasThere;
}

void StreamEvents::setService(const si::Triplet& newService) {
    service = newService;
    pmt.reset();
    objects.stop();
    for (auto& [number, listener] : listeners) {
        listener.pid.reset();
        listener.service = listener.service.value_or(newService);
    }
    follow();
}

void StreamEvents::setPmt(const si::Pmt& newPmt) {
    pmt = newPmt;
    if (objects.isReading()) {
        objects.read(newPmt);
    }
    for (auto& [number, listener] : listeners) {
        listener.pid.reset();
    }
    resolve();
}

void StreamEvents::forgetVersions() {
    for (auto& [number, listener] : listeners) {
        listener.versions.clear();
    }
}

void StreamEvents::resolveSoon() {
    if (!std::exchange(resolves, true)) {
        post([this] {
            resolves = false;
            resolve();
        });
    }
}

/// Finds what is not found yet, and reads carousels as long as names are awaited.
void StreamEvents::resolve() {
    const bool isNamed = std::any_of(listeners.begin(), listeners.end(), [this](const auto& each) {
        return isHere(each.second) && !each.second.target.eventId && !each.second.object;
    });
    if (isNamed && !objects.isReading()) {
        objects.read(*pmt);
    }
    bool awaits = false;
    std::map<Number, Listener> failed;
    for (auto each = listeners.begin(); each != listeners.end();) {
        auto& [number, listener] = *each;
        if (!isHere(listener) || find(listener)) {
            awaits = awaits || (isHere(listener) && !listener.pid);
            ++each;
        } else {
            failed.insert(*each);
            each = listeners.erase(each);
        }
    }
    if (!awaits) {
        objects.stop();
    }
    follow();
    for (const auto& [number, listener] : failed) {
        tell(number, listener, "error", "");
    }
}

/// False when the broadcast does not have it.
bool StreamEvents::find(Listener& listener) {
    const Target& target = listener.target;
    if (listener.pid) {
        return true;
    }
    if (!target.eventId && !listener.object) {
        const EventNames::Answer answer = objects.find(target.componentTag, target.object, target.name);
        if (answer.state != State::found) {
            return answer.state == State::awaited;
        }
        listener.object = answer;
    }
    listener.pid = pidOf(listener);
    return listener.pid.has_value();
}

std::optional<std::uint16_t> StreamEvents::pidOf(const Listener& listener) const {
    const auto carries = [&listener](const si::Pmt::Stream& stream) {
        if (!listener.object) {
            return si::componentTag(stream) == listener.target.componentTag;
        }
        const std::vector<std::uint16_t>& tags = listener.object->associationTags;
        return std::any_of(tags.begin(), tags.end(),
                           [&stream](std::uint16_t tag) { return si::hasAssociationTag(stream, tag); });
    };
    const auto found = std::find_if(pmt->streams.begin(), pmt->streams.end(), carries);
    return found == pmt->streams.end() ? std::nullopt : std::optional(found->pid);
}

void StreamEvents::follow() {
    std::set<std::uint16_t> pids;
    for (const auto& [number, listener] : listeners) {
        if (listener.pid) {
            pids.insert(*listener.pid);
        }
    }
    for (auto each = open.begin(); each != open.end();) {
        if (pids.count(each->first) == 0) {
            filters.close(each->second);
            each = open.erase(each);
        } else {
            ++each;
        }
    }
    for (const std::uint16_t pid : pids) {
        const auto [each, isNew] = open.try_emplace(pid);
        if (isNew) {
            each->second = filters.open(pid, SectionFilters::Pattern::table(si::kStreamDescriptorTableId),
                                        SectionFilters::Repetitions::taken,
                                        [this, pid](si::Bytes section) { onSection(pid, section); });
        }
    }
}

/// A listener that is added while its filter is open needs the section that the others know already.
void StreamEvents::onSection(std::uint16_t pid, si::Bytes section) {
    if (!si::crcIsRight(section)) {
        return;
    }
    const std::vector<si::StreamEvent> events = si::streamEvents(section);
    std::vector<Number> numbers;
    for (const auto& [number, listener] : listeners) {
        if (listener.pid == pid) {
            numbers.push_back(number);
        }
    }
    for (const Number number : numbers) {
        for (const si::StreamEvent& event : events) {
            const auto found = listeners.find(number);  // a listener may remove others
            if (found != listeners.end()) {
                signal(number, found->second, event, section);
            }
        }
    }
}

void StreamEvents::signal(Number number, Listener& listener, const si::StreamEvent& event, si::Bytes section) {
    constexpr std::size_t kMostVersions = 256;
    const std::uint16_t eventId = listener.object ? listener.object->eventId : listener.target.eventId.value_or(0);
    if (event.id != eventId) {
        return;
    }
    if (listener.versions.size() > kMostVersions) {
        listener.versions.clear();
    }
    const std::uint8_t version = si::sectionVersion(section);
    const auto [known, isNew] = listener.versions.try_emplace(si::tableIdExtension(section), version);
    if (isNew || known->second != version) {
        known->second = version;
        tell(number, listener, "trigger", hexText(event.data));
    }
}

void StreamEvents::tell(Number number, const Listener& listener, const char* status, const std::string& data) {
    emit("streamEvent", {{"id", number}, {"status", status}, {"name", listener.target.name}, {"data", data}});
}

}  // namespace tvbrowser
