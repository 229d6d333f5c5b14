// Opens and closes section filters.
#include "section_filters.h"

#include <atomic>
#include <utility>

#include "dvb_helpers/changed_sections.h"

namespace tvbrowser {

using velmora::dtv::helpers::ChangedSections;
using velmora::dtv::helpers::SectionFilter;

/// The bytes of sections that are on their way to the loop.
struct SectionFilters::Waiting {
    std::atomic<std::size_t> bytes{0};
};

SectionFilters::SectionFilters(velmora::dtv::DVBSectionInterface& newInterface, Post newPost)
    : interface(newInterface),
      post(std::move(newPost)),
      waiting(std::make_shared<Waiting>()),
      worker([this] { work(); }) {}

SectionFilters::~SectionFilters() {
    {
        const locks::Lock lock(mutex);
        ends = true;
    }
    change.notify_one();
    worker.join();
}

SectionFilters::Id SectionFilters::open(unsigned int pid, const Pattern& pattern, Repetitions repetitions,
                                        Receiver receiver) {
    const Id id = ++last;
    receivers.emplace(id, std::move(receiver));
    rounds[id] = id;
    {
        const locks::Lock lock(mutex);
        wants.emplace(id, Wanted{pid, pattern, repetitions, id});
    }
    change.notify_one();
    return id;
}

void SectionFilters::close(Id id) {
    receivers.erase(id);
    rounds.erase(id);
    {
        const locks::Lock lock(mutex);
        wants.erase(id);
        refused.erase(id);
    }
    change.notify_one();
}

void SectionFilters::renew() {
    const std::uint64_t round = ++last;
    for (auto& [id, known] : rounds) {
        known = round;
    }
    {
        const locks::Lock lock(mutex);
        for (auto& [id, wanted] : wants) {
            wanted.round = round;
        }
    }
    change.notify_one();
}

void SectionFilters::retry() {
    const std::uint64_t round = ++last;
    std::map<Id, std::uint64_t> again;
    {
        const locks::Lock lock(mutex);
        for (const auto& [id, ofRound] : refused) {
            const auto wanted = wants.find(id);
            if (wanted != wants.end() && wanted->second.round == ofRound) {
                wanted->second.round = round;
                again[id] = round;
            }
        }
        refused.clear();
    }
    for (const auto& [id, newRound] : again) {
        rounds[id] = newRound;
    }
    change.notify_one();
}

/// What is held and not wanted, or of another round, comes before what is not held yet.
std::optional<SectionFilters::Step> SectionFilters::nextStep() {
    for (const auto& [id, round] : states) {
        const auto wanted = wants.find(id);
        if (wanted == wants.end()) {
            return Step{id, std::nullopt};
        }
        if (wanted->second.round != round) {
            return Step{id, wanted->second};
        }
    }
    for (const auto& [id, wanted] : wants) {
        if (states.count(id) == 0) {
            return Step{id, wanted};
        }
    }
    return std::nullopt;
}

void SectionFilters::work() {
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
        states.erase(step->id);
        const auto now = held.find(step->id);
        if (now != held.end()) {
            states[step->id] = now->second.round;
            if (!now->second.filter.isOpen()) {
                refused[step->id] = now->second.round;
            }
        }
    }
    lock.unlock();
    held.clear();
    lock.lock();
}

void SectionFilters::take(const Step& step) {
    held.erase(step.id);
    if (step.wanted) {
        held.emplace(step.id, Held{step.wanted->round, opened(step.id, *step.wanted)});
    }
}

/// A dropped section must not count as one that has come, so the repetitions are skipped here.
SectionFilter SectionFilters::opened(Id id, const Wanted& wanted) {
    const auto receive = [this, id, wanted, pending = waiting, changes = ChangedSections()](
                             const unsigned char* section, unsigned int length) mutable {
        if (pending->bytes + length > kMostWaiting) {
            return;
        }
        if (wanted.repetitions == Repetitions::skipped && !changes.isNew(section, length)) {
            return;
        }
        pending->bytes += length;
        post([this, id, round = wanted.round, bytes = std::string(section, section + length)] {
            arrive(id, round, bytes);
        });
    };
    return SectionFilter(interface, wanted.pid, wanted.pattern, receive);
}

/// Sections of an earlier round may be of another multiplex.
void SectionFilters::arrive(Id id, std::uint64_t round, const std::string& section) {
    waiting->bytes -= section.size();
    const auto known = rounds.find(id);
    if (known != rounds.end() && known->second == round) {
        const Receiver receiver = receivers.at(id);  // a copy, because it may close its own filter
        receiver(section);
    }
}

}  // namespace tvbrowser
