// CarouselReader: reads object carousels of a service through section filters, and reports what comes.
// Threads: one.
// Blocks:  read() until enough has come; opening and closing filters as Filter does.
// Fails:   hasFailed() after a filter was refused, with a line.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "filter.h"
#include "si/service_carousels.h"

namespace dvbshell {

class CarouselReader {
public:
    /// Reads the carousels that begin on these PIDs. Other streams of the service are read if a carousel needs them.
    CarouselReader(Session& newSession, const si::Pmt& pmt, const std::vector<unsigned int>& roots);

    enum class Reports { nothing, everything };
    /// Reads until `isEnough`, which is asked when something has changed, and at the latest until `end`.
    void read(Clock::time_point end, Reports reports, const std::function<bool()>& isEnough);
    bool hasFailed() const { return failed; }

    /// Whether every stream has begun a carousel, or one has and enough time has passed: some have only blocks.
    bool hasBegun();
    /// Whether it has begun, and all that has is complete.
    bool isComplete();
    bool hasModules();
    /// The time in which the carousel repeats itself: the longest between two equal blocks; zero until it is known.
    Clock::duration cycle() const { return cycle_; }
    /// How many of the modules have arrived.
    std::string progress();
    /// By number, of those that have come.
    std::map<std::uint32_t, std::shared_ptr<const si::CarouselTree>> trees();

private:
    struct Counts {
        std::size_t modules = 0;
        std::size_t arrived = 0;
        std::size_t leftOut = 0;
    };
    bool take(const Event& event, Reports reports);
    void followPids();
    bool measure(std::uint16_t pid, const Event& event);
    void report(const si::ServiceCarousels::News& news);
    Counts counts();

    Session& session;
    EventQueue& queue;
    si::ServiceCarousels carousels;
    std::map<std::uint16_t, std::vector<std::unique_ptr<Filter>>> filters;  // by PID
    std::map<std::uint16_t, std::unique_ptr<Filter>> pmtRequests;           // by service
    std::map<std::string, Clock::time_point> blocks;                        // the first ones, and when they came
    Clock::duration cycle_{0};
    Clock::time_point begin = Clock::now();
    bool failed = false;
};

}  // namespace dvbshell
