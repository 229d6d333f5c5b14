// EventNames: looks up the names of stream events in the object carousels of the presented service. It reads the
// carousels from read() to stop().
// Threads: one.
// Blocks:  never.
// Fails:   a carousel that does not come keeps its names awaited. Streams of other services, to which a carousel may lead
//          by deferred association tags, are not read.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "section_filters.h"
#include "si/service_carousels.h"

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
    EventNames(SectionFilters& newFilters, std::function<void()> newChange)
        : filters(newFilters), change(std::move(newChange)) {}

    /// Reads the carousels of the service with this PMT, or goes on with those that it keeps.
    void read(const si::Pmt& newPmt);
    void stop();
    bool isReading() const { return carousels.has_value(); }
    /// `componentTag`: of the carousel's stream; absent: any carousel.
    Answer find(std::optional<std::uint8_t> componentTag, const std::string& path, const std::string& name);

private:
    using Found = si::CarouselTree::Found;
    /// Opens the filters of pids() and closes the others.
    void follow();
    void onSection(std::uint16_t pid, si::Bytes section);
    static Answer answerFrom(const Found& found, const std::string& name);

    SectionFilters& filters;
    const std::function<void()> change;
    std::optional<si::Pmt> pmt;
    std::optional<si::ServiceCarousels> carousels;
    std::map<std::uint16_t, std::vector<SectionFilters::Id>> open;  // by PID
};

}  // namespace tvbrowser
