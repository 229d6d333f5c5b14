// The times of a stream in a file: its program's clock, and the time stamps of its PES packets (ISO/IEC 13818-1,
// clauses 2.4.3.5 and 2.4.3.7). Times count from the clock's origin, which is the first PCR.
// Threads: one for an object.
// Blocks:  never.
// Fails:   never.
#pragma once

#include <map>
#include <optional>
#include <vector>

#include "inserted_stream.h"
#include "si/tables.h"

namespace tsmake {

/// A packet's PCR in ticks of 27 MHz.
std::optional<std::uint64_t> clockOf(const TsPacketBytes& packet);

/// The clock of a program over the packets of a file.
class Clock {
public:
    /// False if the clock jumps.
    bool add(std::size_t number, std::uint64_t value);

    bool hasBegun() const { return !points.empty(); }
    bool isRunning() const { return points.size() > 1 && points.back().ticks != 0; }
    std::uint64_t origin() const { return first; }
    std::uint64_t length() const { return points.back().ticks; }
    /// No value before the first PCR, and from the last one on.
    std::optional<std::uint64_t> at(std::size_t number) const;

private:
    struct Point {
        std::size_t number;
        std::uint64_t ticks;  ///< since the first
    };
    std::vector<Point> points;
    std::uint64_t first = 0;
    std::uint64_t last = 0;
};

/// How long the streams of a program are by their time stamps: the last ones of a round come before the first ones of
/// the next.
class Extent {
public:
    explicit Extent(const si::Pmt& pmt);

    void take(const TsPacketBytes& packet, std::uint64_t origin);
    std::uint64_t ticks() const;

private:
    struct Stamps {
        std::optional<std::uint64_t> first;
        std::uint64_t last = 0;
    };
    std::map<std::uint16_t, Stamps> streams;
};

/// Finds the time stamps of PES packets, which may go over the end of a packet.
class TimeStamps {
public:
    TimeStamps(InsertedStream& newStream, std::uint64_t newOrigin) : stream(newStream), origin(newOrigin) {}

    /// Each packet of the stream, in order, with its payload.
    void take(std::size_t index);

private:
    struct Byte {
        std::size_t packet;
        std::size_t offset;
        std::uint8_t value;
    };

    void onHeader();
    void add(std::size_t at);

    InsertedStream& stream;
    const std::uint64_t origin;
    std::vector<Byte> header;
};

}  // namespace tsmake
