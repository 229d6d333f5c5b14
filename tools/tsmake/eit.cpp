// Builds the EIT: present/following, and the schedule.
#include <algorithm>

#include "si/section.h"
#include "tables.h"
#include "time_fields.h"

namespace tsmake {

namespace {

constexpr unsigned int kRunning = 4;
constexpr unsigned int kNotRunning = 1;

std::string languageOf(const std::string& language) {
    return language.empty() ? "eng" : language;
}

void writeDescriptors(SectionWriter& writer, const Event& event) {
    constexpr std::uint8_t kShortEvent = 0x4D;
    constexpr std::uint8_t kComponent = 0x50;
    constexpr std::uint8_t kParentalRating = 0x55;
    writer.openDescriptor(kShortEvent).text("eng").lengthText(event.name).lengthText(event.text).close();
    for (const EventComponent& component : event.components) {
        writer.openDescriptor(kComponent).u8(0xF0U | component.streamContent).u8(component.type).u8(component.tag);
        writer.text(languageOf(component.language)).text(component.text).close();
    }
    if (!event.ratings.empty()) {
        writer.openDescriptor(kParentalRating);
        for (const EventRating& rating : event.ratings) {
            writer.text(rating.country).u8(rating.rating);
        }
        writer.close();
    }
    writer.text(event.descriptors);
}

void writeEvent(SectionWriter& writer, const Event& event, si::UtcSeconds start, unsigned int runningStatus) {
    writer.u16(event.eventId);
    writeTime(writer, start);
    writeClock(writer, event.duration);
    writer.open12(runningStatus << 1U);
    writeDescriptors(writer, event);
    writer.close();
}

/// The bytes of an event in a section.
std::size_t sizeOf(const Event& event) {
    constexpr std::size_t kFrame = 12;
    SectionWriter writer(0, 0, 0);
    writeEvent(writer, event, 0, 0);
    return writer.finish().size() - kFrame;
}

/// An event of the schedule, and when it starts.
struct Scheduled {
    const Event* event;
    si::UtcSeconds start;
};
/// The events of each section of a segment. A segment without events has an empty section.
using Segment = std::vector<std::vector<Scheduled>>;

constexpr std::size_t kTables = 16;
constexpr std::size_t kSegmentsOfATable = 32;
constexpr std::size_t kSectionsOfASegment = 8;

/// The segments of three hours from the midnight before the broadcast on, up to the last one with an event.
std::vector<Segment> segmentsOf(const Multiplex& multiplex, const Service& service) {
    constexpr std::int64_t kSegmentSeconds = std::int64_t{3} * 3600;
    constexpr std::size_t kRoom = si::kLongestSection - 18;
    const si::UtcSeconds midnight = multiplex.start - si::secondOfDay(multiplex.start);
    std::vector<Segment> segments;
    std::size_t left = 0;
    si::UtcSeconds start = multiplex.start;
    for (const Event& event : service.events) {
        const auto number = static_cast<std::size_t>((start - midnight) / kSegmentSeconds);
        if (number >= kTables * kSegmentsOfATable) {
            break;
        }
        const std::size_t size = sizeOf(event);
        if (number >= segments.size()) {
            segments.resize(number + 1, Segment(1));
            left = kRoom;
        }
        Segment& segment = segments[number];
        if (size > left && segment.size() < kSectionsOfASegment) {
            segment.emplace_back();
            left = kRoom;
        }
        if (size <= left) {
            segment.back().push_back({&event, start});
            left -= size;
        }
        start += event.duration;
    }
    return segments;
}

/// Where a section of the schedule stands.
struct Position {
    std::size_t table;
    std::size_t section;
    std::size_t lastOfSegment;
    std::size_t lastOfTable;
    std::size_t lastTable;
};

Section scheduleSection(const Multiplex& multiplex, const Service& service, const Position& position,
                        const std::vector<Scheduled>& events) {
    constexpr std::size_t kFirstTableId = 0x50;
    SectionWriter writer(static_cast<std::uint8_t>(kFirstTableId + position.table), service.serviceId, 0,
                         static_cast<std::uint8_t>(position.section), static_cast<std::uint8_t>(position.lastOfTable));
    writer.u16(multiplex.transportStreamId).u16(multiplex.originalNetworkId);
    writer.u8(static_cast<unsigned int>(position.lastOfSegment));
    writer.u8(static_cast<unsigned int>(kFirstTableId + position.lastTable));
    for (const Scheduled& scheduled : events) {
        writeEvent(writer, *scheduled.event, scheduled.start, 0);
    }
    return writer.finish();
}

}  // namespace

Section eitSection(const Multiplex& multiplex, const Service& service, bool following, std::size_t present) {
    constexpr unsigned int kTableId = 0x4E;
    constexpr unsigned int kVersions = 32;
    const std::size_t number = present + (following ? 1 : 0);
    SectionWriter writer(kTableId, service.serviceId, static_cast<std::uint8_t>(present % kVersions), following ? 1 : 0,
                         1);
    writer.u16(multiplex.transportStreamId).u16(multiplex.originalNetworkId).u8(1).u8(kTableId);
    if (number >= service.events.size()) {
        return writer.finish();
    }
    si::UtcSeconds start = multiplex.start;
    for (std::size_t earlier = 0; earlier < number; ++earlier) {
        start += service.events[earlier].duration;
    }
    writeEvent(writer, service.events[number], start, following ? kNotRunning : kRunning);
    return writer.finish();
}

std::vector<Section> eitScheduleSections(const Multiplex& multiplex, const Service& service) {
    const std::vector<Segment> segments = segmentsOf(multiplex, service);
    std::vector<Section> sections;
    for (std::size_t number = 0; number < segments.size(); ++number) {
        const std::size_t table = number / kSegmentsOfATable;
        const std::size_t last = std::min((table + 1) * kSegmentsOfATable, segments.size()) - 1;
        const std::size_t first = number % kSegmentsOfATable * kSectionsOfASegment;
        Position position = {table, first, first + segments[number].size() - 1,
                             last % kSegmentsOfATable * kSectionsOfASegment + segments[last].size() - 1,
                             (segments.size() - 1) / kSegmentsOfATable};
        for (const std::vector<Scheduled>& events : segments[number]) {
            sections.push_back(scheduleSection(multiplex, service, position, events));
            ++position.section;
        }
    }
    return sections;
}

}  // namespace tsmake
