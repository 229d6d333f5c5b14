// The verb stream-events. The interface has no operation for it, so it reads sections.
#include <map>
#include <tuple>

#include "filter.h"
#include "message_fields.h"
#include "service_streams.h"
#include "si/stream_event.h"
#include "text/printable.h"
#include "verbs.h"

namespace dvbshell {

namespace {

constexpr std::chrono::seconds kLongestForEvents{10};

using Filters = std::vector<std::unique_ptr<Filter>>;

/// Opens a filter for each PID and table. False, with a line, when one is refused.
bool openAll(Session& session, EventQueue& queue, const std::vector<unsigned int>& pids,
             const std::vector<std::uint8_t>& tables, Filters& filters) {
    for (const unsigned int pid : pids) {
        for (const std::uint8_t table : tables) {
            filters.push_back(std::make_unique<Filter>(session, queue, pid, tablePattern(table)));
            if (!filters.back()->isOpen()) {
                fail(session, "the DTV service did not open a filter on PID " + std::to_string(pid));
                return false;
            }
        }
    }
    return true;
}

/// The data as text if it is text, else in hexadecimal.
std::string shownData(const si::StreamEvent& event) {
    const std::string bytes(event.data.begin(), event.data.end());
    return !bytes.empty() && text::printable(bytes) == bytes ? "\"" + bytes + "\"" : message_fields::hexadecimal(bytes);
}

/// The PID whose filter the section comes from.
std::uint64_t pidOf(const Event& section) {
    return std::get<std::uint64_t>(section.values.at(0).value);
}

void reportEvents(Session& session, const Event& section) {
    const std::uint64_t pid = pidOf(section);
    const std::uint64_t version = si::sectionVersion(section.section);
    for (const si::StreamEvent& event : si::streamEvents(section.section)) {
        const std::vector<message_fields::FieldValue> values = {
            namedValue("pid", pid), namedValue("event_id", std::uint64_t{event.id}),
            namedValue("version_number", version), namedValue("event_npt", std::uint64_t{event.npt})};
        std::vector<message_fields::FieldValue> withData = values;
        withData.push_back(namedValue("data", std::string(event.data.begin(), event.data.end())));
        session.report({message_fields::text(values) + ", data " + shownData(event)}, "stream_event",
                       std::move(withData));
    }
}

int followEvents(Session& session, const StreamChoice& choice, std::chrono::seconds longest) {
    const std::vector<unsigned int> pids = findStreams(session, choice).pids;
    EventQueue& queue = newSectionQueue();
    Filters filters;
    if (pids.empty() || !openAll(session, queue, pids, {si::kStreamDescriptorTableId}, filters)) {
        return session.connection.isGone() ? kNoService : kFailed;
    }
    // Broadcasts repeat their sections all the time, so each version is printed once.
    std::map<std::tuple<std::uint64_t, std::uint16_t, std::uint8_t>, std::string> known;
    const Clock::time_point end = Clock::now() + longest;
    while (const std::optional<Event> event = session.next(queue, end)) {
        std::string& last =
            known[{pidOf(*event), si::tableIdExtension(event->section), si::sectionNumber(event->section)}];
        if (last != event->section) {
            last = event->section;
            reportEvents(session, *event);
        }
    }
    if (session.connection.isGone()) {
        return kNoService;
    }
    return !known.empty() ? kDone
                          : failInTime(session, "no stream event came in " + std::to_string(longest.count()) + " s");
}

Job prepareStreamEvents(ArgumentReader& reader) {
    const StreamChoice choice = readChoice(reader, reader.optionalArgument(), {0x0B, 0x0C, 0x0D}, "stream events");
    const std::chrono::seconds longest = reader.seconds().value_or(kLongestForEvents);
    return [choice, longest](Session& session) { return followEvents(session, choice, longest); };
}

}  // namespace

VerbGroup streamEventVerbs() {
    return {
        "Stream events",
        {
            {{"stream-events",
              {{"[SID[:TAG]]"}},
              "print a service's stream events",
              "Opens filters on table_id 0x3D of the service's DSM-CC components, or of the component with the tag, "
              "and prints each version of an event once. Without a service_id, of the presented service. Ends after "
              "--seconds (10).",
              "stream-events 28107:0x20 --seconds 30"},
             prepareStreamEvents},
        },
    };
}

}  // namespace dvbshell
