// Reads blocks.
#include "bus/pcapng.h"
#include "pcapng_blocks.h"
#include "words.h"

namespace bus {

using namespace pcapng;

namespace {

constexpr unsigned int kWord = 4;
constexpr unsigned int kHalf = 2;

// Offsets in blocks.
constexpr std::size_t kLengthAt = 4;
constexpr std::size_t kMarkAt = 8;
constexpr std::size_t kVersionAt = 12;
constexpr std::size_t kLinkTypeAt = 8;
constexpr std::size_t kInterfaceOptionsAt = 16;
constexpr std::size_t kInterfaceAt = 8;
constexpr std::size_t kTimeHighAt = 12;
constexpr std::size_t kTimeLowAt = 16;
constexpr std::size_t kCapturedAt = 20;
constexpr std::size_t kPacketAt = 28;

/// Ticks a second from the value of if_tsresol: a negative power of ten, or of two if the highest bit is set. 0 if it
/// is finer than a time in 64 bits can be.
std::uint64_t unitsOf(unsigned int resolution) {
    constexpr unsigned int kPowerOfTwo = 0x80;
    constexpr unsigned int kMostDigits = 19;
    constexpr unsigned int kMostBits = 63;
    if ((resolution & kPowerOfTwo) != 0) {
        const unsigned int bits = resolution - kPowerOfTwo;
        return bits > kMostBits ? 0 : std::uint64_t{1} << bits;
    }
    std::uint64_t units = resolution > kMostDigits ? 0 : 1;
    for (unsigned int digit = 0; units != 0 && digit < resolution; ++digit) {
        units *= 10;
    }
    return units;
}

/// Nanoseconds; times that are finer by far are rounded down.
std::uint64_t nanosecondsOf(std::uint64_t time, std::uint64_t units) {
    constexpr std::uint64_t kMostUnits = ~std::uint64_t{0} / kNanosecondsOfASecond;
    const std::uint64_t seconds = time / units;
    std::uint64_t rest = time % units;
    while (units > kMostUnits) {
        units /= 2;
        rest /= 2;
    }
    return seconds * kNanosecondsOfASecond + rest * kNanosecondsOfASecond / units;
}

}  // namespace

void PcapngReader::add(std::string_view bytes) {
    received.erase(0, taken);
    taken = 0;
    if (!isBroken) {
        received += bytes;
    }
}

std::uint64_t PcapngReader::word(std::size_t at, unsigned int width) const {
    return wordAt(received, taken + at, width, isLittle ? ByteOrder::little : ByteOrder::network);
}

/// Nothing behind this place can be read.
bool PcapngReader::fail(const std::string& what, std::string& problem) {
    problem = here() + what;
    isBroken = true;
    return true;
}

bool PcapngReader::take(Record& record, std::string& problem) {
    problem.clear();
    std::size_t length = 0;
    while (!isBroken && findBlock(length, problem)) {
        if (isBroken) {
            return true;
        }
        const bool isTaken = readBlock(length, record, problem);
        taken += length;
        position += length;
        if (isTaken) {
            return true;
        }
    }
    return false;
}

/// True for a complete block, or for one whose end cannot be known, which is the end of reading.
bool PcapngReader::findBlock(std::size_t& length, std::string& problem) {
    const std::size_t available = received.size() - taken;
    if (available < kLeastBlock) {
        return false;
    }
    if (wordAt(received, taken, kWord, ByteOrder::network) == kSectionHeader) {
        const std::uint64_t mark = wordAt(received, taken + kMarkAt, kWord, ByteOrder::little);
        isLittle = mark == kByteOrderMark;
        if (!isLittle && word(kMarkAt, kWord) != kByteOrderMark) {
            return fail("a section header without a byte-order mark", problem);
        }
    } else if (!hasSection) {
        return fail("no pcapng file: it does not begin with a section header", problem);
    }
    const std::uint64_t stated = word(kLengthAt, kWord);
    if (stated < kLeastBlock || stated % kAlignment != 0 || stated > kLongestBlock) {
        return fail("a block cannot have " + std::to_string(stated) + " bytes", problem);
    }
    length = static_cast<std::size_t>(stated);
    if (available < length) {
        return false;
    }
    if (const std::uint64_t repeated = word(length - kWord, kWord); repeated != stated) {
        return fail("a block has " + std::to_string(stated) + " bytes at its begin and " + std::to_string(repeated) +
                        " at its end",
                    problem);
    }
    return true;
}

/// True if it gave a record or a problem. Blocks of other types are skipped.
bool PcapngReader::readBlock(std::size_t length, Record& record, std::string& problem) {
    switch (word(0, kWord)) {
        case kSectionHeader:
            if (length < kLeastSectionHeader || word(kVersionAt, kHalf) != kMajorVersion) {
                return fail("a section header of another version", problem);
            }
            hasSection = true;
            interfaces.clear();
            return false;
        case kInterfaceDescription:
            return readInterface(length, problem);
        case kEnhancedPacket:
            return readPacket(length, record, problem);
        default:
            return false;
    }
}

bool PcapngReader::readInterface(std::size_t length, std::string& problem) {
    constexpr std::uint64_t kMicroseconds = 1000000;
    if (length < kLeastInterface) {
        return fail("an interface description of " + std::to_string(length) + " bytes", problem);
    }
    Interface added{static_cast<std::uint16_t>(word(kLinkTypeAt, kHalf)), kMicroseconds};
    const std::size_t end = length - kWord;
    for (std::size_t at = kInterfaceOptionsAt; at + kWord <= end;) {
        const std::uint64_t code = word(at, kHalf);
        const auto size = static_cast<std::size_t>(word(at + kHalf, kHalf));
        if (code == 0) {
            break;
        }
        if (at + kWord + aligned(size) > end) {
            return fail("an option of an interface is longer than its block", problem);
        }
        if (code == kInterfaceResolution && size == 1) {
            added.unitsPerSecond = unitsOf(static_cast<unsigned int>(word(at + kWord, 1)));
        }
        at += kWord + aligned(size);
    }
    if (added.unitsPerSecond == 0) {
        return fail("an interface with times that are too fine", problem);
    }
    interfaces.push_back(added);
    return false;
}

bool PcapngReader::readPacket(std::size_t length, Record& record, std::string& problem) {
    const auto refuse = [&](const std::string& what) {
        problem = here() + what;
        return true;
    };
    if (length < kLeastPacket) {
        return refuse("a packet block of " + std::to_string(length) + " bytes");
    }
    const std::uint64_t interface = word(kInterfaceAt, kWord);
    if (interface >= interfaces.size()) {
        return refuse("a packet of interface " + std::to_string(interface) + ", which is not described");
    }
    const Interface& from = interfaces[static_cast<std::size_t>(interface)];
    if (from.linkType != kLinkType) {
        return refuse("a packet of link type " + std::to_string(from.linkType) + ", " + std::to_string(kLinkType) +
                      " expected");
    }
    const std::uint64_t size = word(kCapturedAt, kWord);
    if (size > length - kLeastPacket) {
        return refuse("a packet of " + std::to_string(size) + " bytes in a block of " + std::to_string(length));
    }
    const std::string_view packet(received.data() + taken + kPacketAt, static_cast<std::size_t>(size));
    std::optional<Record> read = unpack(packet, problem);
    if (!read) {
        return refuse(problem);
    }
    constexpr unsigned int kBitsOfAWord = 32;
    record = std::move(*read);
    record.time =
        nanosecondsOf(word(kTimeHighAt, kWord) << kBitsOfAWord | word(kTimeLowAt, kWord), from.unitsPerSecond);
    return true;
}

std::string PcapngReader::problemAtEnd() const {
    if (isBroken) {
        return "";
    }
    if (received.size() == taken) {
        return hasSection ? "" : "the file is empty";
    }
    return here() + "the file ends within a block, after " + std::to_string(received.size() - taken) + " bytes of it";
}

}  // namespace bus
