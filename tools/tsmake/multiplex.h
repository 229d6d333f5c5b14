// The description of a multiplex: what is broadcast. Tables and streams are made from it.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

namespace tsmake {

struct Application {
    std::uint32_t organisationId = 0;
    std::uint16_t applicationId = 0;
    std::uint8_t controlCode = 0;
    std::string name;
    std::string urlBase;
    std::string initialPath;
};

struct Event {
    std::uint16_t eventId = 0;
    std::string name;
    std::string text;
};

/// A stream event, sent again and again with its version until the next begins.
struct StreamEvent {
    std::uint16_t eventId = 0;
    std::string data;
    unsigned int second = 0;  ///< of the broadcast, in which it begins
};

/// Texts are bytes as they stand in the tables, the character table's mark in front where there is one.
struct Service {
    std::uint16_t serviceId = 0;
    std::uint8_t serviceType = 0;  ///< 0x19 HD television, 0x02 radio
    std::string name;
    bool hasVideo = true;
    bool isSilent = false;  ///< the PAT and the SDT list it, and nothing else of it is sent
    Event present;
    Event following;
    std::vector<Application> applications;  ///< none: no AIT
    unsigned int aitSections = 1;           ///< the applications are dealt out among them
    unsigned int aitInterval = 200;         ///< milliseconds between two repetitions
    unsigned int aitLifetime = 0;           ///< seconds until the AIT changes its version; 0: it never does

    std::vector<StreamEvent> streamEvents;  ///< by their beginning; on a stream of their own with component_tag 7
    std::uint8_t timelineId = 0;            ///< of the TEMI timeline that the stream with the PCR carries
    std::uint32_t timescale = 0;            ///< its ticks a second; 0: there is no timeline

    // PIDs, given by the multiplex in order.
    std::uint16_t pmtPid = 0;
    std::uint16_t videoPid = 0;
    std::uint16_t audioPid = 0;
    std::uint16_t aitPid = 0;
    std::uint16_t streamEventPid = 0;

    /// The timeline's value in the packet with that PCR (27 MHz). It began with the broadcast.
    std::uint64_t mediaTimestampAt(std::uint64_t pcr) const { return pcr * timescale / 27000000; }
    std::uint16_t pcrPid() const { return hasVideo ? videoPid : audioPid; }
};

struct Multiplex {
    std::uint16_t originalNetworkId = 0;
    std::uint16_t transportStreamId = 0;
    std::string networkName;
    std::string provider;
    std::time_t start = 0;  ///< UTC of the first packet; the present events began then
    std::vector<Service> services;
};

/// The project's sample: three television services and a radio, two of them with HbbTV applications.
Multiplex sampleMultiplex();

}  // namespace tsmake
