// Fields that download messages and carousels' objects share.
#pragma once

#include <optional>
#include <string>

#include "cursor.h"
#include "si/biop.h"

namespace si {

/// Reads a count, then calls `read` as many times.
template <typename Read>
void readCounted(Cursor& cursor, std::size_t countWidth, Read read) {
    const std::uint64_t count = cursor.number(countWidth);
    for (std::uint64_t index = 0; index < count && cursor.good(); ++index) {
        read();
    }
}

/// A stream that a carousel uses for something (BIOP::Tap).
struct Tap {
    std::uint64_t use = 0;
    std::uint16_t associationTag = 0;
    Bytes selector;
};
Tap readTap(Cursor& cursor);

/// An interoperable object reference (IOP::IOR); none if it leads nowhere.
std::optional<ObjectReference> readReference(Cursor& cursor);

}  // namespace si
