// The description of a multiplex: what is broadcast. Tables and streams are made from it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "si/calendar.h"

namespace tsmake {

/// Where tables differ during the broadcast, each state has the second in which it begins.
using Second = unsigned int;

struct Application {
    std::uint32_t organisationId = 0;
    std::uint16_t applicationId = 0;
    std::uint8_t controlCode = 0;
    std::string name;
    std::string urlBase;
    std::string initialPath;
    std::vector<std::string> boundaries = {};  ///< URL prefixes beyond the origin of urlBase
};

/// The applications from a second on.
struct AitVersion {
    Second second = 0;
    std::uint8_t version = 0;
    std::vector<Application> applications;
};

struct Ait {
    std::vector<AitVersion> versions;  ///< by their beginning; none: there is no AIT
    std::optional<std::uint8_t> tag = 5;
    unsigned int sections = 1;     ///< the applications are dealt out among them
    unsigned int interval = 200;   ///< milliseconds between two repetitions
    std::optional<Second> end;     ///< from then on neither the PMT signals it nor is it sent
    bool emptySignalling = false;  ///< the PMT's application_signalling_descriptor lists no application_type
    std::uint16_t pid = 0;
};

/// An event of the EIT. The service's events follow one another, the first begins with the broadcast.
struct Event {
    std::uint16_t eventId = 0;
    std::string name;
    std::string text;
    unsigned int duration = 3600;  ///< seconds
};

/// A page that a teletext stream has (EN 300 468, clause 6.2.43).
struct TeletextPage {
    std::string language;   ///< three letters, or empty
    std::uint8_t type = 1;  ///< teletext_type: 1 initial page, 2 subtitles, 5 subtitles for people who do not hear well
    unsigned int number = 100;
};

struct Component {
    enum class Kind { video, audio, subtitle, teletext };
    Kind kind = Kind::video;
    std::optional<std::uint8_t> tag;
    std::string language;  ///< three letters, or empty
    std::uint16_t pid = 0;
    std::vector<TeletextPage> pages = {};  ///< of teletext
};

/// A stream event, sent again and again with its version until the next begins.
struct StreamEvent {
    std::uint16_t eventId = 0;
    std::string name;  ///< in the carousel's stream event object
    std::string data;
    Second second = 0;
};

struct StreamEvents {
    std::vector<StreamEvent> events;  ///< by their beginning; none: there is no such component
    std::optional<std::uint8_t> tag = 7;
    std::uint16_t pid = 0;
    /// Path of the object that names the events, in a carousel of its own; empty: there is no carousel.
    std::string object;
    std::uint8_t carouselTag = 8;
    std::uint16_t carouselPid = 0;
};

/// Sections that carry nothing but their number, for measurements.
struct PrivateSections {
    std::optional<std::uint8_t> tag;
    std::uint8_t tableId = 0x80;
    unsigned int perSecond = 10;
    unsigned int size = 1024;  ///< of a whole section, in bytes
    std::uint16_t pid = 0;
};

/// Texts are bytes as they stand in the tables, the character table's mark in front where there is one.
struct Service {
    std::uint16_t serviceId = 0;
    std::uint8_t serviceType = 0;  ///< 0x19 HD television, 0x02 radio
    std::string name;
    bool isSilent = false;  ///< the PAT and the SDT list it, and nothing else of it is sent
    std::vector<Component> components;
    std::vector<Event> events;
    Ait ait;
    StreamEvents streamEvents;
    std::uint8_t timelineId = 0;  ///< of the TEMI timeline that the stream with the PCR carries
    std::uint32_t timescale = 0;  ///< its ticks a second; 0: there is no timeline
    std::vector<PrivateSections> privateSections;
    std::uint16_t pmtPid = 0;

    /// The timeline's value in the packet with that PCR (27 MHz). It began with the broadcast.
    std::uint64_t mediaTimestampAt(std::uint64_t pcr) const {
        // Whole seconds and the rest apart: a product of all of it has more than 64 bits.
        constexpr std::uint64_t kTicks = 27000000;
        return pcr / kTicks * timescale + pcr % kTicks * timescale / kTicks;
    }
    /// The first component carries the PCR.
    std::uint16_t pcrPid() const { return components.empty() ? 0x1FFF : components.front().pid; }
};

/// A service of another transport stream, which only the SDT (other) tells of.
struct OtherService {
    std::uint16_t serviceId = 0;
    std::uint8_t serviceType = 0;
    std::string name;
};

struct OtherStream {
    std::uint16_t originalNetworkId = 0;
    std::uint16_t transportStreamId = 0;
    std::string deliverySystem;  ///< as of the multiplex
    std::vector<OtherService> services;
};

struct Multiplex {
    std::uint64_t bitRate = 1504000;
    std::uint16_t originalNetworkId = 0;
    std::uint16_t transportStreamId = 0;
    std::string networkName;
    std::string provider;
    si::UtcSeconds start = 0;    ///< of the first packet
    std::string deliverySystem;  ///< the NIT's descriptor, tag and length included
    std::vector<Service> services;
    std::vector<OtherStream> otherStreams;
};

/// The project's sample: three television services and a radio, two of them with HbbTV applications.
Multiplex sampleMultiplex();

/// Gives PIDs to what has none, service by service in their order. False, with what is wrong, when two things have the
/// same PID or there are no more.
bool assignPids(Multiplex& multiplex, std::string& error);

}  // namespace tsmake
