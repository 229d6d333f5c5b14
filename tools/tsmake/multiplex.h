// The description of a multiplex. tsmake generates tables and streams from it.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "inserted_stream.h"
#include "si/calendar.h"

namespace tsmake {

/// Seconds from the start of the broadcast. Each state of a table has the second in which it begins.
using Second = unsigned int;

/// A platform profile that an application needs, with its version (TS 102 809, clause 5.3.5.3).
struct Profile {
    std::uint16_t profile = 0;  ///< 0 is the basic one
    std::uint8_t major = 1;
    std::uint8_t minor = 2;
    std::uint8_t micro = 1;
};

struct Application {
    std::uint32_t organisationId = 0;
    std::uint16_t applicationId = 0;
    std::uint8_t controlCode = 0;
    std::string name;
    std::string urlBase;
    std::string initialPath;
    std::vector<std::string> boundaries = {};  ///< URL prefixes beyond the origin of urlBase
    bool isServiceBound = true;
    std::uint8_t priority = 1;
    std::uint8_t visibility = 3;  ///< two bits: 0 to nobody, 1 to applications, 3 to users too
    std::vector<Profile> profiles = {Profile{}};
    std::optional<std::uint8_t> carouselTag = std::nullopt;  ///< it is in a carousel; without urlBase only there
    bool isCarouselFirst = false;                            ///< the carousel is preferred to urlBase
};

/// One version of the AIT, valid from `second` on.
struct AitVersion {
    Second second = 0;
    std::uint8_t version = 0;
    std::vector<Application> applications;
};

struct Ait {
    std::vector<AitVersion> versions;  ///< in order of `second`; empty: no AIT
    std::optional<std::uint8_t> tag = 5;
    unsigned int sections = 1;     ///< number of sections that share the applications
    unsigned int interval = 200;   ///< milliseconds between two repetitions
    std::optional<Second> end;     ///< from here on the PMT does not signal the AIT, and no section is sent
    bool emptySignalling = false;  ///< the PMT's application_signalling_descriptor lists no application_type
    std::uint16_t pid = 0;
};

/// What a component of a service is during an event (EN 300 468, clause 6.2.8).
struct EventComponent {
    std::uint8_t streamContent = 1;  ///< four bits
    std::uint8_t type = 1;
    std::uint8_t tag = 0;
    std::string language;
    std::string text;
};

/// The least age in a country (EN 300 468, clause 6.2.28).
struct EventRating {
    std::string country;
    std::uint8_t rating = 0;  ///< years minus 3
};

/// An event of the EIT. The first event begins with the broadcast, each other event at the end of the one before.
struct Event {
    std::uint16_t eventId = 0;
    std::string name;
    std::string text;
    unsigned int duration = 3600;  ///< seconds
    std::vector<EventComponent> components = {};
    std::vector<EventRating> ratings = {};
    std::string descriptors = {};  ///< others, tag and length included
};

/// A page that a teletext stream has (EN 300 468, clause 6.2.43).
struct TeletextPage {
    std::string language;   ///< three letters, or empty
    std::uint8_t type = 1;  ///< teletext_type: 1 initial page, 2 subtitles, 5 subtitles for people who do not hear well
    unsigned int number = 100;
};

/// An elementary stream in another transport stream.
struct StreamPlace {
    std::string file;
    std::uint16_t pid = 0;
};

struct Component {
    using Kind = ComponentKind;
    Kind kind = Kind::video;
    std::optional<std::uint8_t> tag;
    std::string language;  ///< three letters, or empty
    std::uint16_t pid = 0;
    std::vector<TeletextPage> pages = {};  ///< teletext only
    std::optional<StreamPlace> place = std::nullopt;
    std::shared_ptr<const InsertedStream> stream = nullptr;  ///< in place of an empty one; readStreams() reads it
};

/// A stream event. tsmake repeats it with the same version until the next one begins.
struct StreamEvent {
    std::uint16_t eventId = 0;
    std::string name;  ///< in the carousel's stream event object
    std::string data;
    Second second = 0;
};

struct StreamEvents {
    std::vector<StreamEvent> events;  ///< in order of `second`; empty: no such component
    std::optional<std::uint8_t> tag = 7;
    std::uint16_t pid = 0;
    /// Path of the stream event object with the events' names; empty: no carousel.
    std::string object;
    std::uint8_t carouselTag = 8;
    std::uint16_t carouselPid = 0;
};

/// A stream event object in a carousel.
struct CarouselEvents {
    std::string path;
    std::map<std::string, std::uint16_t> idsByName;
    std::uint16_t streamTag = 7;  ///< association tag of the stream with the events
};

/// What a carousel has from `second` on.
struct CarouselVersion {
    Second second = 0;
    std::string folder;
    std::map<std::string, std::string> files = {};  ///< by path; readFolders() takes them from the folder
};

struct Carousel {
    std::uint32_t id = 0;
    std::vector<CarouselVersion> versions = {};  ///< in order of `second`
    std::uint64_t bitRate = 500000;              ///< of its packets
    std::size_t blockSize = 4066;
    std::size_t moduleSize = 65536;  ///< of files that share a module, before compression
    bool isCompressed = true;
    std::uint8_t tag = 0;
    std::uint16_t pid = 0;
    std::optional<std::uint8_t> blockTag = std::nullopt;  ///< blocks have a stream of their own
    std::uint16_t blockPid = 0;
    std::vector<CarouselEvents> eventObjects = {};
    std::map<std::string, std::string> contentTypes = {};  ///< of files, by path
};

/// Numbered sections without other content, for measurements.
struct PrivateSections {
    std::optional<std::uint8_t> tag;
    std::uint8_t tableId = 0x80;
    unsigned int perSecond = 10;
    unsigned int size = 1024;  ///< bytes of a whole section
    std::uint16_t pid = 0;
};

/// Texts are the bytes of the tables, including the byte that selects the character table.
struct Service {
    std::uint16_t serviceId = 0;
    std::uint8_t serviceType = 0;  ///< 0x19 HD television, 0x02 radio
    std::string name;
    bool isSilent = false;  ///< only PAT and SDT list it; nothing else is sent for it
    std::vector<Component> components;
    std::vector<Event> events;
    bool hasSchedule = false;  ///< the EIT lists all events, beside the present and the following one
    Ait ait;
    StreamEvents streamEvents;
    std::vector<Carousel> carousels;
    std::uint8_t timelineId = 0;  ///< TEMI timeline in the packets with the PCR
    std::uint32_t timescale = 0;  ///< its ticks per second; 0: no timeline
    std::vector<PrivateSections> privateSections;
    std::uint16_t pmtPid = 0;

    /// The timeline's value in the packet with this PCR (27 MHz). The timeline begins at 0 with the broadcast.
    std::uint64_t mediaTimestampAt(std::uint64_t pcr) const {
        // Convert whole seconds and the remainder separately, because the full product can exceed 64 bits.
        constexpr std::uint64_t kTicks = 27000000;
        return pcr / kTicks * timescale + pcr % kTicks * timescale / kTicks;
    }
    /// The first component carries the PCR.
    std::uint16_t pcrPid() const { return components.empty() ? 0x1FFF : components.front().pid; }
};

/// A service of another transport stream. Only the SDT (other) lists it.
struct OtherService {
    std::uint16_t serviceId = 0;
    std::uint8_t serviceType = 0;
    std::string name;
};

struct OtherStream {
    std::uint16_t originalNetworkId = 0;
    std::uint16_t transportStreamId = 0;
    std::string deliverySystem;  ///< its descriptor, tag and length included
    std::vector<OtherService> services;
};

struct Multiplex {
    std::uint64_t bitRate = 1504000;
    std::uint16_t originalNetworkId = 0;
    std::uint16_t transportStreamId = 0;
    std::string networkName;
    std::string provider;
    si::UtcSeconds start = 0;    ///< time of the first packet
    std::string deliverySystem;  ///< the NIT's descriptor, tag and length included
    std::vector<Service> services;
    std::vector<OtherStream> otherStreams;
};

/// The project's sample: three television services and a radio, two of them with HbbTV applications.
Multiplex sampleMultiplex();

/// Assigns a PID to each stream without one, service by service. False, with the reason, when two streams have the same
/// PID or no PID is left.
bool assignPids(Multiplex& multiplex, std::string& error);

}  // namespace tsmake
