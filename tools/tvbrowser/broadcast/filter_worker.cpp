// Opens and closes section filters.
#include "filter_worker.h"

#include <thread>
#include <utility>

#include "dvb_helpers/changed_sections.h"

namespace tvbrowser {

using velmora::dtv::helpers::ChangedSections;
using velmora::dtv::helpers::SectionFilter;

std::shared_ptr<FilterWorker> FilterWorker::start(velmora::dtv::DVBSectionInterface& filters,
                                                  std::shared_ptr<SectionInbox> inbox) {
    std::shared_ptr<FilterWorker> worker(new FilterWorker(filters, std::move(inbox)));
    std::thread([worker] { worker->work(); }).detach();
    return worker;
}

void FilterWorker::want(Id id, const FilterWish& wish) {
    {
        const locks::Lock lock(mutex);
        wishes.insert_or_assign(id, wish);
    }
    change.notify_one();
}

void FilterWorker::unwant(Id id) {
    {
        const locks::Lock lock(mutex);
        wishes.erase(id);
    }
    change.notify_one();
}

std::vector<FilterWorker::Id> FilterWorker::takeRefused() {
    const locks::Lock lock(mutex);
    return std::exchange(refused, {});
}

void FilterWorker::end() {
    {
        const locks::Lock lock(mutex);
        ends = true;
    }
    change.notify_one();
}

/// What is not wanted any more, or in another round, comes before what is not open yet.
std::optional<FilterWorker::Step> FilterWorker::nextStep() {
    for (const auto& [id, round] : rounds) {
        const auto wish = wishes.find(id);
        if (wish == wishes.end()) {
            return Step{id, std::nullopt};
        }
        if (wish->second.round != round) {
            return Step{id, wish->second};
        }
    }
    for (const auto& [id, wish] : wishes) {
        if (rounds.count(id) == 0) {
            return Step{id, wish};
        }
    }
    return std::nullopt;
}

void FilterWorker::work() {
    locks::Lock lock(mutex);
    while (!ends) {
        const std::optional<Step> step = nextStep();
        if (!step) {
            change.wait(lock.forWaiting());
            continue;
        }
        lock.unlock();
        take(*step);
        lock.lock();
        rounds.erase(step->id);
        const auto now = held.find(step->id);
        if (now != held.end()) {
            rounds[step->id] = now->second.round;
            if (!now->second.filter.isOpen()) {
                refused.push_back(step->id);
            }
        }
    }
    lock.unlock();
    held.clear();
    lock.lock();
}

void FilterWorker::take(const Step& step) {
    held.erase(step.id);
    if (step.wish) {
        held.emplace(step.id, Held{step.wish->round, opened(step)});
    }
}

/// A dropped section must not count as one that has come, so the repetitions are skipped here.
SectionFilter FilterWorker::opened(const Step& step) const {
    const bool skips = step.wish->repetitions == FilterWish::Repetitions::skipped;
    const auto receive = [to = inbox, id = step.id, round = step.wish->round, skips, changes = ChangedSections()](
                             const unsigned char* section, unsigned int length) mutable {
        const bool fits = to->waitingBytes + length <= SectionInbox::kMostWaiting;
        if (fits && (!skips || changes.isNew(section, length))) {
            to->waitingBytes += length;
            to->deliver(id, round, std::string(section, section + length));
        }
    };
    return SectionFilter(filters, step.wish->pid, step.wish->pattern, receive);
}

}  // namespace tvbrowser
