// FilterWorker: makes the open section filters be those that are wanted. Opening and closing waits for the DTV service,
// so a thread of its own does it. When it has to end, it closes its filters and ends by itself, however long that
// takes.
// Threads: any; the worker, which opens and closes; the delivery thread, which copies sections.
// Blocks:  never.
// Locks:   `mutex` guards what is wanted; not held during any call out.
// Fails:   a filter that the DTV service does not open is listed by takeRefused().
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "dvb_helpers/section_filter.h"
#include "locks/lock.h"

namespace tvbrowser {

/// A filter; another round means that it is to be opened anew.
struct FilterWish {
    enum class Repetitions { taken, skipped };

    unsigned int pid = 0;
    velmora::dtv::helpers::SectionPattern pattern = {};
    Repetitions repetitions = Repetitions::taken;
    std::uint64_t round = 0;
};

/// Takes the sections of all filters. A filter drops what would exceed the limit; a broadcast repeats it.
struct SectionInbox {
    static constexpr std::size_t kMostWaiting = std::size_t{8} << 20U;

    /// On the delivery thread.
    std::function<void(std::uint64_t id, std::uint64_t round, std::string section)> deliver;
    std::atomic<std::size_t> waitingBytes{0};  ///< of sections that are delivered and not dealt with
};

class FilterWorker : public std::enable_shared_from_this<FilterWorker> {
public:
    using Id = std::uint64_t;

    static std::shared_ptr<FilterWorker> start(velmora::dtv::DVBSectionInterface& filters,
                                               std::shared_ptr<SectionInbox> inbox);
    void want(Id id, const FilterWish& wish);
    void unwant(Id id);
    /// Those that were refused since the last call.
    std::vector<Id> takeRefused();
    void end();

private:
    struct Held {
        std::uint64_t round;
        velmora::dtv::helpers::SectionFilter filter;
    };
    /// What comes next: closes the filter of this number, and opens it if it is wanted.
    struct Step {
        Id id;
        std::optional<FilterWish> wish;
    };

    FilterWorker(velmora::dtv::DVBSectionInterface& newFilters, std::shared_ptr<SectionInbox> newInbox)
        : filters(newFilters), inbox(std::move(newInbox)) {}
    void work();
    std::optional<Step> nextStep() REQUIRES(mutex);
    void take(const Step& step);
    velmora::dtv::helpers::SectionFilter opened(const Step& step) const;

    velmora::dtv::DVBSectionInterface& filters;
    const std::shared_ptr<SectionInbox> inbox;
    std::map<Id, Held> held;  // the worker's
    std::mutex mutex;
    std::condition_variable change;
    std::map<Id, FilterWish> wishes GUARDED_BY(mutex);
    std::map<Id, std::uint64_t> rounds GUARDED_BY(mutex);  // of those in `held`
    std::vector<Id> refused GUARDED_BY(mutex);
    bool ends GUARDED_BY(mutex) = false;
};

}  // namespace tvbrowser
