// Keeps the lists of section queues.
#include "queue_exchange.h"

#include <algorithm>

namespace host {

namespace {

using Queues = std::vector<NamedQueue>;

Queues::iterator named(Queues& queues, const std::string& name) {
    return std::find_if(queues.begin(), queues.end(), [&name](const NamedQueue& queue) { return queue.name == name; });
}

void removeNamed(Queues& queues, const std::string& name) {
    const auto found = named(queues, name);
    if (found != queues.end()) {
        queues.erase(found);
    }
}

}  // namespace

OwnQueues& OwnQueues::instance() {
    static auto* const queues = new OwnQueues;
    return *queues;
}

void OwnQueues::add(const NamedQueue& queue) {
    const locks::Lock lock(mutex);
    removeNamed(queues, queue.name);
    queues.push_back(queue);
}

void OwnQueues::remove(const std::string& name) {
    const locks::Lock lock(mutex);
    removeNamed(queues, name);
}

std::vector<NamedQueue> OwnQueues::all() {
    const locks::Lock lock(mutex);
    return queues;
}

GivenQueues& GivenQueues::instance() {
    static auto* const queues = new GivenQueues;
    return *queues;
}

bool GivenQueues::give(std::uint32_t peer, const std::string& name, int descriptor, std::string& error) {
    if (name.empty() || name.size() > kLongestName) {
        error = "its name has " + std::to_string(name.size()) + " characters";
        return false;
    }
    const std::shared_ptr<SectionRing> ring = SectionRing::open(descriptor, error);
    if (!ring) {
        return false;
    }
    const locks::Lock lock(mutex);
    Queues& queues = byPeer[peer];
    removeNamed(queues, name);
    if (queues.size() >= kMostOfAPeer) {
        error = "the peer has " + std::to_string(kMostOfAPeer) + " queues already";
        return false;
    }
    queues.push_back({name, ring});
    return true;
}

std::shared_ptr<SectionRing> GivenQueues::find(std::uint32_t peer, const std::string& name) {
    const locks::Lock lock(mutex);
    const auto given = byPeer.find(peer);
    if (given == byPeer.end() || given->second.empty()) {
        return nullptr;
    }
    if (name.empty()) {
        return given->second.back().ring;
    }
    const auto found = named(given->second, name);
    return found == given->second.end() ? nullptr : found->ring;
}

void GivenQueues::forget(std::uint32_t peer) {
    const locks::Lock lock(mutex);
    byPeer.erase(peer);
}

}  // namespace host
