// Keeps filters and their receivers.
#include "section_filters.h"

#include <utility>

namespace tvbrowser {

SectionFilters::SectionFilters(velmora::dtv::DVBSectionInterface& newInterface, const Post& post)
    : interface(newInterface), inbox(std::make_shared<SectionInbox>()) {
    inbox->deliver = [this, post](Id id, std::uint64_t ofRound, std::string section) {
        post([this, id, ofRound, section = std::move(section)] { arrive(id, ofRound, section); });
    };
}

SectionFilters::Id SectionFilters::open(unsigned int pid, const Pattern& pattern, Repetitions repetitions,
                                        Receiver receiver) {
    const Id id = ++last;
    Filter& filter = filters[id];
    filter = {{pid, pattern, repetitions, 0}, std::move(receiver)};
    want(id, filter);
    return id;
}

void SectionFilters::close(Id id) {
    filters.erase(id);
    if (worker) {
        worker->unwant(id);
    }
}

void SectionFilters::want(Id id, Filter& filter) {
    filter.wish.round = ++round;
    if (worker) {
        worker->want(id, filter.wish);
    }
}

void SectionFilters::onConnected() {
    onGone();
    worker = FilterWorker::start(interface, inbox);
    renew();
}

/// The worker may be waiting for a DTV service that does not answer any more, so the next one is another.
void SectionFilters::onGone() {
    if (worker) {
        worker->end();
        worker.reset();
    }
}

void SectionFilters::renew() {
    for (auto& [id, filter] : filters) {
        want(id, filter);
    }
}

void SectionFilters::retry() {
    for (const Id id : worker ? worker->takeRefused() : std::vector<Id>()) {
        const auto filter = filters.find(id);
        if (filter != filters.end()) {
            want(id, filter->second);
        }
    }
}

/// Sections of an earlier round may be of another multiplex.
void SectionFilters::arrive(Id id, std::uint64_t ofRound, const std::string& section) {
    inbox->waitingBytes -= section.size();
    const auto filter = filters.find(id);
    if (filter != filters.end() && filter->second.wish.round == ofRound) {
        const Receiver receiver = filter->second.receiver;  // a copy, because it may close its own filter
        receiver(section);
    }
}

}  // namespace tvbrowser
