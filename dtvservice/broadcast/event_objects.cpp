// Collects modules and reads directories.
#include "event_objects.h"

#include "si/carousel.h"

namespace broadcast {

namespace {

/// Limits on the memory that a broadcast can use. Real carousels stay far below them.
constexpr std::size_t kLargestModule = std::size_t{8} * 1024 * 1024;
constexpr std::size_t kMostModules = 4096;
constexpr std::size_t kDeepest = 16;
constexpr std::size_t kMostHeld = std::size_t{32} * 1024 * 1024;

/// Whether the module is read at all.
bool fits(const si::DownloadInfo::Module& module, std::uint16_t blockSize) {
    const std::uint32_t original = module.originalSize.value_or(0);
    const std::size_t blocks = si::blockCount(module.size, blockSize);
    return module.size <= kLargestModule && original <= kLargestModule &&
           original / si::ObjectCarousel::kMostCompressed <= module.size && blockSize != 0 && blocks <= si::kMostBlocks;
}

}  // namespace

bool EventObjects::onSection(std::uint16_t pid, si::Bytes section) {
    received += section.size;
    bool changed = isStale;
    if (isStale) {
        lookThroughSoon();
    }
    if (const std::optional<si::DownloadBlock> block = si::downloadBlock(section)) {
        changed = onBlock(*block) || changed;
    } else if (const std::optional<si::DownloadInfo> info = si::downloadInfo(section)) {
        changed = onInfo(*info) || changed;
    } else if (const std::optional<si::ObjectReference> gateway = si::serviceGateway(section)) {
        const auto [known, isNew] = gateways.try_emplace(pid, *gateway);
        if (isNew || !(known->second == *gateway)) {
            known->second = *gateway;
            lookThroughSoon();
            changed = true;
        }
    }
    return changed;
}

bool EventObjects::onInfo(const si::DownloadInfo& info) {
    bool changed = false;
    bool hasLost = false;
    for (const si::DownloadInfo::Module& listed : info.modules) {
        const auto known = modules.find({info.downloadId, listed.id});
        const bool isSame = known != modules.end() && known->second.info.version == listed.version &&
                            known->second.info.size == listed.size && known->second.blockSize == info.blockSize;
        const bool isOneTooMany = known == modules.end() && modules.size() >= kMostModules;
        if (isSame || isOneTooMany || !fits(listed, info.blockSize)) {
            continue;
        }
        Module& module = modules[{info.downloadId, listed.id}];
        hasLost = hasLost || module.isComplete;
        drop(module);
        module = {};
        module.info = listed;
        module.blockSize = info.blockSize;
        module.blocks = si::ModuleBlocks(listed.size, info.blockSize);
        changed = true;
    }
    if (hasLost) {
        lookThroughSoon();
    }
    return changed;
}

/// Takes blocks only of modules that a known directory refers to. The carousel repeats all blocks, so one that is
/// ignored too early arrives again.
bool EventObjects::onBlock(const si::DownloadBlock& block) {
    const ModuleId id = {block.downloadId, block.moduleId};
    const auto found = modules.find(id);
    if (waiting.count(id) == 0 || found == modules.end() || found->second.info.version != block.moduleVersion) {
        return false;
    }
    Module& module = found->second;
    if (module.blocks.has(block.number) || !module.blocks.disagrees(block).empty()) {
        return false;
    }
    module.blocks.add(block);
    hold(module);
    if (held > kMostHeld) {
        empty(module);
    }
    if (!module.blocks.isComplete()) {
        return false;
    }
    finish(module);
    goOnIn(id);
    return true;
}

void EventObjects::hold(Module& module) {
    held -= module.held;
    module.held = module.blocks.cost();
    held += module.held;
}

/// The module is read anew from its next block on.
void EventObjects::empty(Module& module) {
    module.blocks = si::ModuleBlocks(module.info.size, module.blockSize);
    hold(module);
}

void EventObjects::drop(Module& module) {
    empty(module);
    kept -= module.kept;
    module.objects.clear();
    module.kept = 0;
}

void EventObjects::finish(Module& module) {
    std::string error;
    const std::optional<std::vector<std::uint8_t>> bytes = si::wholeModule(module.blocks, module.info, error);
    drop(module);
    if (bytes) {
        si::eventObjects(*bytes, [&](si::CarouselObject object) { keep(module, std::move(object)); });
    }
    module.isComplete = true;
}

void EventObjects::keep(Module& module, si::CarouselObject object) {
    const std::size_t size = si::costOf(object);
    if (kept + size > mostKept) {
        passedOver = true;
        return;
    }
    std::string key = object.key;
    if (module.objects.try_emplace(std::move(key), std::move(object)).second) {
        module.kept += size;
        kept += size;
    }
}

void EventObjects::lookThrough() {
    events_.clear();
    places.clear();
    waiting.clear();
    visited.clear();
    noted = 0;
    received = 0;
    ++searches_;
    for (const auto& [pid, gateway] : gateways) {
        visit({pid, {gateway.carouselId, gateway.moduleId}, gateway.key, {}, 0});
    }
}

/// Reads a module as soon as it is complete. After the last module it reads everything again from the service gateway,
/// so that the result does not depend on the order in which modules arrive.
void EventObjects::goOnIn(const ModuleId& id) {
    const auto waitingPlaces = waiting.extract(id);
    for (const Place& place : waitingPlaces.mapped()) {
        look(place);
    }
    if (waiting.empty()) {
        lookThroughSoon();
    }
}

/// Searches now, or after as many more bytes as the search would take work: a carousel whose gateway or directories
/// change all the time would otherwise take all of the thread's time.
void EventObjects::lookThroughSoon() {
    constexpr std::size_t kFoundPerReceived = 16;
    isStale = noted / kFoundPerReceived > received;
    if (!isStale) {
        lookThrough();
    }
}

/// Visits each object once, by the first path found, because directories may form cycles.
void EventObjects::visit(Place place) {
    if (place.depth <= kDeepest && visited.count({place.pid, place.module, place.key}) == 0 &&
        note(sizeof place + 2 * place.key.size() + place.path.size())) {
        visited.emplace(place.pid, place.module, place.key);
        look(place);
    }
}

void EventObjects::look(const Place& place) {
    const auto module = modules.find(place.module);
    if (module == modules.end() || !module->second.isComplete) {
        waiting[place.module].push_back(place);
        return;
    }
    const auto object = module->second.objects.find(place.key);
    if (object == module->second.objects.end()) {
        return;
    }
    for (const si::CarouselObject::EventName& event : object->second.events) {
        const auto& tags = object->second.associationTags;
        if (note(sizeof(Named) + place.path.size() + 2 * event.name.size() + tags.size() * sizeof tags[0])) {
            places[event.name].push_back(events_.size());
            events_.push_back({place.pid, place.path, event.name, event.id, tags});
        }
    }
    for (const si::CarouselObject::Entry& entry : object->second.entries) {
        visit({place.pid,
               {entry.object.carouselId, entry.object.moduleId},
               entry.object.key,
               place.path.empty() ? entry.name : place.path + "/" + entry.name,
               place.depth + 1});
    }
}

const std::vector<std::size_t>& EventObjects::placesOf(const std::string& name) const {
    static const std::vector<std::size_t> none;
    const auto found = places.find(name);
    return found == places.end() ? none : found->second;
}

/// Counts the bytes against the limit; false if they exceed it.
bool EventObjects::note(std::size_t bytes) {
    if (noted + bytes > mostKept) {
        passedOver = true;
        return false;
    }
    noted += bytes;
    return true;
}

}  // namespace broadcast
