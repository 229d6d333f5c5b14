// Times in sections (EN 300 468, Annex C).
#pragma once

#include "section_writer.h"
#include "si/calendar.h"

namespace tsmake {

constexpr unsigned int bcd(unsigned int value) {
    return value / 10 << 4U | value % 10;
}

/// Hours, minutes and seconds as six BCD digits.
inline void writeClock(SectionWriter& writer, std::int64_t seconds) {
    const auto time = static_cast<unsigned int>(si::secondOfDay(seconds));
    writer.u8(bcd(time / 3600)).u8(bcd(time / 60 % 60)).u8(bcd(time % 60));
}

/// Modified Julian Date and UTC; the undefined value when the date does not fit 16 bits.
inline void writeTime(SectionWriter& writer, si::UtcSeconds time) {
    const std::int64_t mjd = si::mjdOf(time);
    if (mjd < 0 || mjd > 0xFFFF) {
        writer.u16(0xFFFF).u8(0xFF).u8(0xFF).u8(0xFF);
        return;
    }
    writer.u16(static_cast<unsigned int>(mjd));
    writeClock(writer, time);
}

}  // namespace tsmake
