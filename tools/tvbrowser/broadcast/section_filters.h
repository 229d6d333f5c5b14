// SectionFilters: section filters that stay open. Opening and closing waits for the DTV service, so a worker thread
// does it: it makes the open filters be those that are wanted. Filters end when the DTV service ends or presents a
// service of another multiplex, and nobody is told; renew() opens them anew then.
// Threads: the loop's; the worker, which opens and closes; the delivery thread, which copies sections and posts them.
// Blocks:  only the destruction: until the filters are closed, 10 seconds for each if the DTV service does not answer.
// Locks:   `mutex` guards what is wanted; not held during any call out.
// Fails:   a filter that the DTV service refuses is tried again by retry(). Sections are dropped while more than
//          kMostWaiting bytes wait for the loop; a broadcast repeats them.
#pragma once

#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

#include "dvb_helpers/section_filter.h"
#include "locks/lock.h"
#include "values.h"

namespace tvbrowser {

class SectionFilters {
public:
    using Id = std::uint64_t;
    using Pattern = velmora::dtv::helpers::SectionPattern;
    /// On the loop's thread. It may open and close filters.
    using Receiver = std::function<void(si::Bytes)>;
    enum class Repetitions { taken, skipped };
    static constexpr std::size_t kMostWaiting = std::size_t{8} << 20U;

    SectionFilters(velmora::dtv::DVBSectionInterface& newInterface, Post newPost);
    SectionFilters(const SectionFilters&) = delete;
    SectionFilters& operator=(const SectionFilters&) = delete;
    ~SectionFilters();

    Id open(unsigned int pid, const Pattern& pattern, Repetitions repetitions, Receiver receiver);
    /// The receiver is not called again.
    void close(Id id);
    /// Opens every filter anew.
    void renew();
    /// Opens those anew that were refused.
    void retry();

private:
    struct Wanted {
        unsigned int pid;
        Pattern pattern;
        Repetitions repetitions;
        std::uint64_t round;
    };
    struct Held {
        std::uint64_t round;
        velmora::dtv::helpers::SectionFilter filter;
    };
    /// What the worker does next: closes the filter of this number, and opens it if it is wanted.
    struct Step {
        Id id;
        std::optional<Wanted> wanted;
    };
    struct Waiting;

    void work();
    std::optional<Step> nextStep() REQUIRES(mutex);
    void take(const Step& step);
    velmora::dtv::helpers::SectionFilter opened(Id id, const Wanted& wanted);
    void arrive(Id id, std::uint64_t round, const std::string& section);

    velmora::dtv::DVBSectionInterface& interface;
    const Post post;
    const std::shared_ptr<Waiting> waiting;

    std::map<Id, Receiver> receivers;    // the loop's
    std::map<Id, std::uint64_t> rounds;  // the loop's
    std::uint64_t last = 0;              // number or round; the loop's
    std::map<Id, Held> held;             // the worker's
    std::mutex mutex;
    std::condition_variable change;
    std::map<Id, Wanted> wants GUARDED_BY(mutex);
    std::map<Id, std::uint64_t> states GUARDED_BY(mutex);  // rounds of those in `held`
    std::map<Id, std::uint64_t> refused GUARDED_BY(mutex);
    bool ends GUARDED_BY(mutex) = false;
    std::thread worker;
};

}  // namespace tvbrowser
