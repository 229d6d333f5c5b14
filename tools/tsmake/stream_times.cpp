// Works out times.
#include "stream_times.h"

#include <algorithm>

#include "packet_file.h"

namespace tsmake {

namespace {

constexpr std::uint64_t kTicksOfTimeStamp = 300;
constexpr std::uint64_t kClockWrap = (std::uint64_t{1} << 33U) * kTicksOfTimeStamp;
/// A clock that goes on by more than this between two PCRs jumps.
constexpr std::uint64_t kLongestStep = std::uint64_t{5} * 27000000;
/// A time stamp that is later is before the origin.
constexpr std::uint64_t kLatest = std::uint64_t{1} << 32U;
constexpr std::size_t kPtsAt = 9;
constexpr std::size_t kDtsAt = 14;
constexpr std::size_t kTimeStampSize = 5;
constexpr std::size_t kTimedHeaderSize = kDtsAt + kTimeStampSize;
constexpr unsigned int kHasPts = 0x80;
constexpr unsigned int kHasDts = 0xC0;

/// Which time stamps a PES header has: kHasPts, kHasDts or none. `byteAt` gives its bytes.
template <typename ByteAt>
unsigned int timeFlagsOf(ByteAt byteAt) {
    constexpr std::size_t kFlagsAt = 7;
    const bool isPes = byteAt(0) == 0 && byteAt(1) == 0 && byteAt(2) == 1;
    return isPes ? byteAt(kFlagsAt) & kHasDts : 0U;
}

/// The time stamp at an offset, from the clock's origin on (90 kHz).
template <typename ByteAt>
std::uint64_t timeStampAt(std::size_t at, std::uint64_t origin, ByteAt byteAt) {
    constexpr std::uint64_t kWrap = kClockWrap / kTicksOfTimeStamp;
    const std::uint64_t value = (std::uint64_t{byteAt(at)} & 0x0EU) << 29U | std::uint64_t{byteAt(at + 1)} << 22U |
                                (std::uint64_t{byteAt(at + 2)} & 0xFEU) << 14U | std::uint64_t{byteAt(at + 3)} << 7U |
                                std::uint64_t{byteAt(at + 4)} >> 1U;
    return (value + kWrap - origin / kTicksOfTimeStamp) % kWrap;
}

}  // namespace

std::optional<std::uint64_t> clockOf(const TsPacketBytes& packet) {
    constexpr std::uint8_t kFlagsAndClock = 7;
    constexpr std::size_t kClockAt = 6;
    if (!hasAdaptation(packet) || packet[kPacketHeaderSize] < kFlagsAndClock ||
        (packet[kPacketHeaderSize + 1] & 0x10U) == 0) {
        return std::nullopt;
    }
    std::uint64_t bits = 0;
    for (std::size_t at = kClockAt; at < kClockAt + 6; ++at) {
        bits = bits << 8U | packet[at];
    }
    return (bits >> 15U) * kTicksOfTimeStamp + (bits & 0x1FFU);
}

bool Clock::add(std::size_t number, std::uint64_t value) {
    if (points.empty()) {
        first = value;
        last = value;
        points.push_back({number, 0});
        return true;
    }
    const std::uint64_t step = (value + kClockWrap - last) % kClockWrap;
    if (step > kLongestStep) {
        return false;
    }
    last = value;
    points.push_back({number, points.back().ticks + step});
    return true;
}

std::optional<std::uint64_t> Clock::at(std::size_t number) const {
    const auto next = std::upper_bound(points.begin(), points.end(), number,
                                       [](std::size_t one, const Point& point) { return one < point.number; });
    if (next == points.begin() || next == points.end()) {
        return std::nullopt;
    }
    const Point& before = *(next - 1);
    return before.ticks + (next->ticks - before.ticks) * (number - before.number) / (next->number - before.number);
}

Extent::Extent(const si::Pmt& pmt) {
    for (const si::Pmt::Stream& stream : pmt.streams) {
        streams.try_emplace(stream.pid);
    }
}

void Extent::take(const TsPacketBytes& packet, std::uint64_t origin) {
    const auto stream = streams.find(pidOf(packet));
    const std::size_t payload = payloadOf(packet);
    if (stream == streams.end() || !startsUnit(packet) || payload + kTimedHeaderSize > kTsPacketSize) {
        return;
    }
    const auto byteAt = [&packet, payload](std::size_t at) { return packet[payload + at]; };
    const unsigned int flags = timeFlagsOf(byteAt);
    const std::uint64_t value = timeStampAt(flags == kHasDts ? kDtsAt : kPtsAt, origin, byteAt);
    if ((flags & kHasPts) != 0 && value < kLatest) {
        Stamps& stamps = stream->second;
        stamps.first = stamps.first.value_or(value);
        stamps.last = std::max(stamps.last, value);
    }
}

std::uint64_t Extent::ticks() const {
    constexpr std::uint64_t kPicture = 3600;  // behind the last time stamp
    std::uint64_t longest = 0;
    for (const auto& [pid, stamps] : streams) {
        longest = std::max(longest, stamps.last - std::min(stamps.first.value_or(0), stamps.last) + kPicture);
    }
    return longest * kTicksOfTimeStamp;
}

void TimeStamps::take(std::size_t index) {
    const TsPacketBytes& packet = stream.packets[index].bytes;
    if (startsUnit(packet)) {
        header.clear();
    }
    for (std::size_t at = payloadOf(packet); at < kTsPacketSize && header.size() < kTimedHeaderSize; ++at) {
        header.push_back({index, at, packet[at]});
        if (header.size() == kTimedHeaderSize) {
            onHeader();
        }
    }
}

void TimeStamps::onHeader() {
    const unsigned int flags = timeFlagsOf([this](std::size_t at) { return header[at].value; });
    if ((flags & kHasPts) != 0) {
        add(kPtsAt);
    }
    if (flags == kHasDts) {
        add(kDtsAt);
    }
}

void TimeStamps::add(std::size_t at) {
    const std::uint64_t value = timeStampAt(at, origin, [this](std::size_t each) { return header[each].value; });
    for (std::size_t place = 0; place < kTimeStampSize; ++place) {
        const Byte& byte = header[at + place];
        stream.timeBytes.push_back({byte.packet, byte.offset, static_cast<unsigned int>(place), value});
    }
}

}  // namespace tsmake
