// Builds the EIT: present/following, and the schedule.
#include <algorithm>
#include <map>

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
/// The events of each section of a segment.
using Segment = std::vector<std::vector<Scheduled>>;

/// The segments of three hours from the midnight before the broadcast on, by number.
std::map<std::size_t, Segment> segmentsOf(const Multiplex& multiplex, const Service& service) {
    constexpr std::int64_t kSegmentSeconds = 3 * 3600;
    constexpr std::size_t kRoom = 4096 - 18;
    constexpr std::size_t kMostSections = 8;
    constexpr std::size_t kMostSegments = std::size_t{32} * 16;
    const si::UtcSeconds midnight = multiplex.start - si::secondOfDay(multiplex.start);
    std::map<std::size_t, Segment> segments;
    std::size_t left = 0;
    si::UtcSeconds start = multiplex.start;
    for (const Event& event : service.events) {
        const auto number = static_cast<std::size_t>((start - midnight) / kSegmentSeconds);
        const std::size_t size = sizeOf(event);
        Segment& segment = segments[number];
        if (segment.empty() || size > left) {
            segment.emplace_back();
            left = kRoom;
        }
        if (number < kMostSegments && segment.size() <= kMostSections) {
            segment.back().push_back({&event, start});
            left -= size;
        }
        start += event.duration;
    }
    return segments;
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
    constexpr unsigned int kFirstTableId = 0x50;
    constexpr std::size_t kSegmentsOfATable = 32;
    constexpr std::size_t kSectionsOfASegment = 8;
    constexpr std::size_t kTables = 16;
    const std::map<std::size_t, Segment> segments = segmentsOf(multiplex, service);
    if (segments.empty()) {
        return {};
    }
    const std::size_t lastSegment = std::min(segments.rbegin()->first, kTables * kSegmentsOfATable - 1);
    const std::size_t lastTable = lastSegment / kSegmentsOfATable;
    std::vector<Section> sections;
    for (std::size_t number = 0; number <= lastSegment; ++number) {
        const auto found = segments.find(number);
        const Segment segment = found == segments.end() ? Segment(1) : found->second;
        const std::size_t count = std::min(segment.size(), kSectionsOfASegment);
        const std::size_t table = number / kSegmentsOfATable;
        const std::size_t lastOfTable = table < lastTable ? kSegmentsOfATable - 1 : lastSegment % kSegmentsOfATable;
        const auto lastFound = segments.find(table * kSegmentsOfATable + lastOfTable);
        const std::size_t lastCount =
            lastFound == segments.end() ? 1 : std::min(lastFound->second.size(), kSectionsOfASegment);
        const std::size_t first = number % kSegmentsOfATable * kSectionsOfASegment;
        for (std::size_t index = 0; index < count; ++index) {
            SectionWriter writer(static_cast<std::uint8_t>(kFirstTableId + table), service.serviceId, 0,
                                 static_cast<std::uint8_t>(first + index),
                                 static_cast<std::uint8_t>(lastOfTable * kSectionsOfASegment + lastCount - 1));
            writer.u16(multiplex.transportStreamId).u16(multiplex.originalNetworkId);
            writer.u8(static_cast<unsigned int>(first + count - 1));
            writer.u8(static_cast<unsigned int>(kFirstTableId + lastTable));
            for (const Scheduled& scheduled : segment[index]) {
                writeEvent(writer, *scheduled.event, scheduled.start, 0);
            }
            sections.push_back(writer.finish());
        }
    }
    return sections;
}

}  // namespace tsmake
