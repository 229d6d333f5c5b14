// EIT sections for tests.
#pragma once

#include <string>
#include <vector>

#include "si/section_writer.h"

/// An event of a made section, on 1 January 2026.
struct MadeEvent {
    std::uint16_t id = 0;
    std::string name;
    unsigned int hour = 0;
    std::string descriptors = {};  // others, tag and length included
    bool hasStart = true;
};

/// Where a made section stands.
struct MadePlace {
    std::uint8_t tableId = 0x50;
    std::uint16_t serviceId = 1;
    std::uint8_t version = 0;
    std::uint8_t number = 0;
    std::uint8_t last = 0;
    std::uint8_t lastOfSegment = 0;
    std::uint8_t lastTable = 0x50;
    std::uint16_t transportStreamId = 1025;
    std::uint16_t networkId = 1;
};

inline si::Section madeEit(const MadePlace& place, const std::vector<MadeEvent>& events) {
    constexpr unsigned int kDay = 61041;  // Modified Julian Date
    constexpr unsigned int kUndefined = 0xFFFF;
    si::SectionWriter writer(place.tableId, place.serviceId, place.version, place.number, place.last);
    writer.u16(place.transportStreamId).u16(place.networkId).u8(place.lastOfSegment).u8(place.lastTable);
    for (const MadeEvent& event : events) {
        const unsigned int bcdHour = event.hour / 10 << 4U | event.hour % 10;
        writer.u16(event.id);
        if (event.hasStart) {
            writer.u16(kDay).u8(bcdHour).u8(0x30).u8(0);
        } else {
            writer.u16(kUndefined).u16(kUndefined).u8(0xFF);
        }
        writer.u8(0x01).u8(0x15).u8(0x00).open12(0x8);  // running
        writer.openDescriptor(0x4D).text("deu").lengthText(event.name).lengthText("text").close();
        writer.text(event.descriptors).close();
    }
    return writer.finish();
}
