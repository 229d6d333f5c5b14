// Checks the lengths within descriptors, with a table of the descriptors that have any.
#include "descriptor_checks.h"

#include <algorithm>
#include <iterator>

#include "cursor.h"

namespace si {

namespace {

/// Takes entries until nothing is left. `take` must take at least one byte each time.
template <typename Take>
void takeEntries(Cursor& cursor, Take take) {
    while (cursor.left() != 0 && cursor.good()) {
        take(cursor);
    }
}

void takeMuxcodes(Cursor& cursor) {
    constexpr unsigned int kSlotCountShift = 3;
    takeEntries(cursor, [](Cursor& loop) {
        Cursor entry(loop.takeShort());
        entry.take(1);
        for (std::size_t count = entry.size(1); count != 0 && entry.good(); --count) {
            entry.take(2 * (entry.size(1) >> kSlotCountShift));
        }
        if (!entry.good() || entry.left() != 0) {
            loop.fail();
        }
    });
}

void takeVbiServices(Cursor& cursor) {
    takeEntries(cursor, [](Cursor& loop) {
        loop.take(1);
        loop.takeShort();
    });
}

void takeExtendedEvents(Cursor& cursor) {
    takeEntries(cursor, [](Cursor& loop) {
        constexpr unsigned int kOtherIdentifier = 3;
        loop.take(2);
        const std::uint64_t flags = loop.number(1);
        const std::uint64_t identifier = flags >> 2U & 3U;
        if (identifier == kOtherIdentifier) {
            loop.take(2);
        } else {
            loop.take((identifier == 1 ? 2U : 0U) + ((flags & 2U) != 0 ? 2U : 0U) + ((flags & 1U) != 0 ? 2U : 0U));
        }
    });
}

void takeLinkage(Cursor& cursor) {
    constexpr std::size_t kTriplet = 6;
    constexpr unsigned int kExtendedEvent = 0x0E;
    cursor.take(kTriplet);
    if (cursor.number(1) == kExtendedEvent) {
        takeExtendedEvents(cursor);
    } else {
        cursor.rest();
    }
}

/// Skips `before` bytes, then takes `texts` texts, each with a length byte before it.
template <std::size_t before, int texts>
void takeTexts(Cursor& cursor) {
    cursor.take(before);
    for (int text = 0; text < texts; ++text) {
        cursor.takeShort();
    }
}

/// Skips `front` bytes, then repeats to the end: a language and `texts` texts.
template <std::size_t front, int texts>
void takeTextsByLanguage(Cursor& cursor) {
    constexpr std::size_t kLanguage = 3;
    cursor.take(front);
    takeEntries(cursor, takeTexts<kLanguage, texts>);
}

void takeItems(Cursor& cursor) {
    constexpr std::size_t kNumberAndLanguage = 4;
    cursor.take(kNumberAndLanguage);
    Cursor items(cursor.takeShort());
    takeEntries(items, takeTexts<0, 2>);
    cursor.takeShort();
    if (!items.good()) {
        cursor.fail();
    }
}

void takeMosaic(Cursor& cursor) {
    cursor.take(1);
    takeEntries(cursor, [](Cursor& loop) {
        constexpr std::size_t kLinkSizes[] = {0, 2, 6, 6, 8};
        loop.take(2);
        loop.takeShort();
        const std::size_t link = loop.size(1);
        loop.take(link < std::size(kLinkSizes) ? kLinkSizes[link] : 0);
    });
}

/// Cells with a loop of subcells of a fixed size.
template <std::size_t before, std::size_t subcell>
void takeCells(Cursor& cursor) {
    takeEntries(cursor, [](Cursor& loop) {
        loop.take(before);
        const Bytes subcells = loop.takeShort();
        if (subcells.size % subcell != 0) {
            loop.fail();
        }
    });
}

void takeDataBroadcast(Cursor& cursor) {
    constexpr std::size_t kLanguage = 3;
    takeTexts<3, 1>(cursor);
    takeTexts<kLanguage, 1>(cursor);
}

/// Requires at least `shortest` bytes. The library itself checks fields whose presence depends on flags in these bytes.
template <std::size_t shortest>
void takeAtLeast(Cursor& cursor) {
    cursor.take(shortest);
    cursor.rest();
}

struct Check {
    std::uint8_t tag;
    void (*take)(Cursor&);
};

constexpr Check kChecks[] = {
    {0x02, takeAtLeast<1>},
    {0x21, takeMuxcodes},
    {0x24, takeAtLeast<3>},
    {0x25, takeAtLeast<5>},
    {0x26, takeAtLeast<5>},
    {0x2A, takeAtLeast<2>},
    {0x45, takeVbiServices},
    {0x48,
     [](Cursor& cursor) {
         takeTexts<1, 2>(cursor);
         cursor.rest();
     }},
    {0x4A, takeLinkage},
    {0x4D,
     [](Cursor& cursor) {
         takeTexts<3, 2>(cursor);
         cursor.rest();
     }},
    {0x4E,
     [](Cursor& cursor) {
         takeItems(cursor);
         cursor.rest();
     }},
    {0x51, takeMosaic},
    {0x57, takeAtLeast<3>},
    {0x5B, takeTextsByLanguage<0, 1>},
    {0x5C, takeTextsByLanguage<0, 1>},
    {0x5D, takeTextsByLanguage<0, 2>},
    {0x5E, takeTextsByLanguage<1, 1>},
    {0x64, takeDataBroadcast},
    {0x66, takeAtLeast<2>},
    {0x6A, takeAtLeast<1>},
    {0x6C, takeCells<9, 8>},
    {0x6D, takeCells<6, 5>},
    {0x6E, takeAtLeast<2>},
    {0x7A, takeAtLeast<1>},
    {0x7C, takeAtLeast<1>},
};

}  // namespace

bool innerLengthsFit(const Descriptor& descriptor) {
    const auto* const check = std::find_if(std::begin(kChecks), std::end(kChecks),
                                           [&](const Check& known) { return known.tag == descriptor.tag; });
    if (check == std::end(kChecks)) {
        return true;
    }
    Cursor cursor(descriptor.bytes);
    check->take(cursor);
    return cursor.good() && cursor.left() == 0;
}

}  // namespace si
