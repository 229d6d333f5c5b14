// EventNames: looks up the names of stream events in the object carousels of the presented service. It reads the
// carousels from read() to stop().
// Threads: one.
// Blocks:  never.
// Fails:   a carousel that does not come keeps its names awaited.
#pragma once

#include "broadcast_carousels.h"

namespace tvbrowser {

class EventNames {
public:
    /// Enough for the carousels of applications; their files are read with them.
    static constexpr std::size_t kMostBytes = std::size_t{64} << 20U;

    enum class State { found, awaited, absent };
    struct Answer {
        State state = State::absent;
        std::uint16_t eventId = 0;
        std::vector<std::uint16_t> associationTags = {};  ///< of the streams with the events
    };

    /// `newChange`: answers may be other ones now.
    EventNames(SectionFilters& filters, std::function<void()> newChange)
        : carousels(filters, kMostBytes, std::move(newChange)) {}

    /// Reads the carousels of the service with this PMT, or goes on with those that it keeps.
    void read(const si::Pmt& pmt) { carousels.read(pmt); }
    void stop() { carousels.stop(); }
    bool isReading() const { return carousels.isReading(); }
    /// `componentTag`: of the carousel's stream; absent: any carousel.
    Answer find(std::optional<std::uint8_t> componentTag, const std::string& path, const std::string& name);

private:
    static Answer answerFrom(const BroadcastCarousels::Found& found, const std::string& name);

    BroadcastCarousels carousels;
};

}  // namespace tvbrowser
