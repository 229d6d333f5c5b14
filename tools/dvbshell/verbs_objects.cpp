// The verbs about DSM-CC: stream-events, carousel. The interface has no operation for them, so they read sections.
#include <algorithm>
#include <map>
#include <tuple>

#include "carousel_reader.h"
#include "message_fields.h"
#include "sections.h"
#include "si/stream_event.h"
#include "si/tables.h"
#include "text/printable.h"
#include "verbs.h"
#include "words.h"

namespace dvbshell {

namespace {

constexpr std::chrono::seconds kLongestForEvents{10};
constexpr std::chrono::seconds kLongestForCarousel{20};
constexpr std::chrono::seconds kLongestForPmt{5};

/// The streams of a service that are wanted: one by its component_tag, or all of the given types.
struct StreamChoice {
    unsigned int serviceId = 0;
    std::optional<unsigned int> tag;
    std::vector<std::uint8_t> types;  // stream_type, ISO/IEC 13818-1, table 2-34
    const char* what;
};

StreamChoice readChoice(ArgumentReader& reader, std::vector<std::uint8_t> types, const char* what) {
    StreamChoice choice{0, std::nullopt, std::move(types), what};
    const std::vector<std::string> parts = split(reader.argument(), ':');
    choice.serviceId = reader.number("SID", parts[0], kMostNumber16);
    if (parts.size() > 1) {
        choice.tag = reader.number("TAG", parts[1], kMostByte);
    }
    if (parts.size() > 2) {
        reader.refuse("\"" + reader.argument() + "\" is not SID or SID:TAG");
    }
    return choice;
}

bool isWanted(const si::Pmt::Stream& stream, const StreamChoice& choice) {
    const std::optional<std::uint8_t> tag = si::componentTag(stream);
    return choice.tag ? tag && *tag == *choice.tag
                      : std::find(choice.types.begin(), choice.types.end(), stream.streamType) != choice.types.end();
}

/// The PIDs of the streams. None, with a line that says why, when there are none.
std::vector<unsigned int> findPids(Session& session, const StreamChoice& choice) {
    const std::string service = "service " + std::to_string(choice.serviceId);
    const std::optional<std::string> section = awaitPmt(session, choice.serviceId, Clock::now() + kLongestForPmt);
    std::string error;
    const std::optional<si::Pmt> pmt = section ? si::parsePmt(*section, error) : std::nullopt;
    std::vector<unsigned int> pids;
    if (!pmt) {
        section
            ? fail(session, "the PMT of " + service + " cannot be read: " + error)
            : failInTime(session, "no PMT of " + service + " came in " + std::to_string(kLongestForPmt.count()) + " s");
        return pids;
    }
    for (const si::Pmt::Stream& stream : pmt->streams) {
        if (isWanted(stream, choice)) {
            pids.push_back(stream.pid);
        }
    }
    if (pids.empty()) {
        fail(session, service + " has no " +
                          (choice.tag ? "component with the tag " + std::to_string(*choice.tag)
                                      : std::string("component that may carry ") + choice.what));
    }
    return pids;
}

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
    const std::vector<unsigned int> pids = findPids(session, choice);
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

void reportNews(Session& session, const std::vector<CarouselNews>& news) {
    for (const CarouselNews& each : news) {
        std::vector<message_fields::FieldValue> values = each.values;
        values.push_back(namedValue("text", each.text));
        session.report({each.text}, "carousel", std::move(values));
    }
}

int readCarousel(Session& session, const StreamChoice& choice, std::chrono::seconds longest) {
    const std::vector<unsigned int> pids = findPids(session, choice);
    EventQueue& queue = newSectionQueue();
    Filters filters;
    if (pids.empty() ||
        !openAll(session, queue, pids, {si::kDownloadControlTableId, si::kDownloadDataTableId}, filters)) {
        return session.connection.isGone() ? kNoService : kFailed;
    }
    CarouselReader carousel;
    const Clock::time_point end = Clock::now() + longest;
    while (!carousel.isComplete()) {
        const std::optional<Event> event = session.next(queue, end);
        if (!event) {
            break;
        }
        reportNews(session, carousel.add(event->section));
    }
    if (session.connection.isGone()) {
        return kNoService;
    }
    if (!carousel.hasModules()) {
        return failInTime(session, "no module of a carousel came in " + std::to_string(longest.count()) + " s");
    }
    session.printer.note(carousel.progress());
    for (const std::string& path : carousel.paths()) {
        session.report({path}, "object", {namedValue("text", path)});
    }
    return kDone;
}

Job prepareStreamEvents(ArgumentReader& reader) {
    const StreamChoice choice = readChoice(reader, {0x0B, 0x0C, 0x0D}, "stream events");
    const std::chrono::seconds longest = reader.seconds().value_or(kLongestForEvents);
    return [choice, longest](Session& session) { return followEvents(session, choice, longest); };
}

Job prepareCarousel(ArgumentReader& reader) {
    const StreamChoice choice = readChoice(reader, {0x0B, 0x0D}, "an object carousel");
    const std::chrono::seconds longest = reader.seconds().value_or(kLongestForCarousel);
    return [choice, longest](Session& session) { return readCarousel(session, choice, longest); };
}

}  // namespace

VerbGroup objectVerbs() {
    return {
        "Stream events and carousels",
        {
            {{"stream-events",
              {{"SID[:TAG]"}},
              "print a service's stream events",
              "Opens filters on table_id 0x3D of the service's DSM-CC components, or of the component with the tag, "
              "and prints each version of an event once. Ends after --seconds (10).",
              "stream-events 28107:0x20 --seconds 30"},
             prepareStreamEvents},
            {{"carousel",
              {{"SID[:TAG]"}},
              "list an object carousel",
              "Prints the modules with versions and sizes as they are announced, then the paths of the directories "
              "that have arrived. Ends when all modules have arrived, or after --seconds (20).",
              "carousel 28107"},
             prepareCarousel},
        },
    };
}

}  // namespace dvbshell
