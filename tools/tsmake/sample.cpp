// The sample multiplex.
#include "multiplex.h"

namespace tsmake {

namespace {

constexpr std::uint8_t kHdTelevision = 0x19;
constexpr std::uint8_t kRadio = 0x02;
constexpr std::uint8_t kAutostart = 1;
constexpr std::uint8_t kPresent = 2;
constexpr std::uint32_t kOrganisation = 0x00000190;
constexpr std::uint16_t kFirstPid = 0x0100;
constexpr std::uint16_t kPidsPerService = 0x0100;

Service first() {
    Service service;
    service.serviceId = 28106;
    service.serviceType = kHdTelevision;
    service.name = "Velmora One HD";
    service.present = {1001, "Morning on the Lake", "Mist, rowers and the first ferry."};
    service.following = {1002, "News at Nine", "What happened overnight."};
    service.applications = {
        {kOrganisation, 1, kAutostart, "Red Button", "http://hbbtv.one.example/", "redbutton/index.html?lang=en"},
        {kOrganisation, 2, kPresent, "Media Library", "http://hbbtv.one.example/", "library/index.html"}};
    return service;
}

/// 0x15 in front: UTF-8. 0x05: ISO 8859-9.
Service second() {
    Service service;
    service.serviceId = 28107;
    service.serviceType = kHdTelevision;
    service.name =
        "\x15"
        "Velmora Zwei F\xC3\xB6hn";
    service.present = {2001,
                       "\x05"
                       "Die gro\xDF"
                       "e K\xFC"
                       "che",
                       "\x05"
                       "Heute: K\xE4sesp\xE4tzle."};
    service.following = {2002, "Wetter", "Die Aussichten."};
    service.applications = {{kOrganisation, 17, kAutostart, "Zwei Text", "https://zwei.example/hbbtv/", "start.html"}};
    return service;
}

/// 0x03: ISO 8859-7.
Service third() {
    Service service;
    service.serviceId = 28108;
    service.serviceType = kHdTelevision;
    service.name =
        "\x03"
        "Velmora \xD4\xF1\xDF\xE1";
    service.present = {3001,
                       "\x03"
                       "\xC5\xE9\xE4\xDE\xF3\xE5\xE9\xF2",
                       "A service without applications."};
    service.following = {3002, "Cinema", "A film."};
    return service;
}

Service radio() {
    Service service;
    service.serviceId = 28120;
    service.serviceType = kRadio;
    service.name = "Velmora Radio";
    service.hasVideo = false;
    service.present = {4001, "Night Music", "Until the birds sing."};
    service.following = {4002, "Wake Up", "With the birds."};
    return service;
}

}  // namespace

Multiplex sampleMultiplex() {
    Multiplex multiplex;
    multiplex.originalNetworkId = 1;
    multiplex.transportStreamId = 1025;
    multiplex.networkName = "Velmora Network";
    multiplex.provider = "Velmora";
    multiplex.start = 1767258000;  // 2026-01-01 09:00:00 UTC
    multiplex.services = {first(), second(), third(), radio()};
    std::uint16_t pid = kFirstPid;
    for (Service& service : multiplex.services) {
        service.pmtPid = pid;
        service.videoPid = pid + 1;
        service.audioPid = pid + 2;
        service.aitPid = pid + 5;
        service.streamEventPid = pid + 6;
        pid = static_cast<std::uint16_t>(pid + kPidsPerService);
    }
    return multiplex;
}

}  // namespace tsmake
