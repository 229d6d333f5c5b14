// SectionFilters: section filters that stay open while the DTV service is there. It ends them when it presents a
// service of another multiplex, and nobody is told; renew() opens them anew then.
// Threads: the loop's.
// Blocks:  never.
// Fails:   a filter that the DTV service refuses is tried again by retry().
#pragma once

#include <functional>
#include <map>
#include <memory>

#include "filter_worker.h"
#include "values.h"

namespace tvbrowser {

class SectionFilters {
public:
    using Id = FilterWorker::Id;
    using Pattern = velmora::dtv::helpers::SectionPattern;
    using Repetitions = FilterWish::Repetitions;
    /// It may open and close filters.
    using Receiver = std::function<void(si::Bytes)>;

    /// `post` drops what comes after the destruction.
    SectionFilters(velmora::dtv::DVBSectionInterface& newInterface, const Post& post);
    SectionFilters(const SectionFilters&) = delete;
    SectionFilters& operator=(const SectionFilters&) = delete;
    ~SectionFilters() { onGone(); }

    Id open(unsigned int pid, const Pattern& pattern, Repetitions repetitions, Receiver receiver);
    /// The receiver is not called again.
    void close(Id id);
    /// The DTV service is there, and knows none of the filters.
    void onConnected();
    void onGone();
    /// Opens every filter anew.
    void renew();
    /// Opens those anew that were refused.
    void retry();

private:
    struct Filter {
        FilterWish wish;
        Receiver receiver;
    };

    void want(Id id, Filter& filter);
    void arrive(Id id, std::uint64_t round, const std::string& section);

    velmora::dtv::DVBSectionInterface& interface;
    const std::shared_ptr<SectionInbox> inbox;
    std::map<Id, Filter> filters;
    Id last = 0;                           // number of a filter
    std::uint64_t round = 0;               // the last one
    std::shared_ptr<FilterWorker> worker;  // while the DTV service is there
};

}  // namespace tvbrowser
