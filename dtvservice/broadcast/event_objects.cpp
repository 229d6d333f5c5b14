// Assembles modules and reads directories.
#include "event_objects.h"

#include <zlib.h>

#include <algorithm>

namespace broadcast {

namespace {

/// Limits on the memory that a broadcast can use. Real carousels stay far below them.
constexpr std::size_t kLargestModule = std::size_t{8} * 1024 * 1024;
constexpr std::uint32_t kMostCompressed = 100;  // times
constexpr std::size_t kMostModules = 4096;
constexpr std::size_t kDeepest = 16;
constexpr std::size_t kMostHeld = std::size_t{32} * 1024 * 1024;

std::vector<std::uint8_t> inflated(const std::vector<std::uint8_t>& bytes, std::uint32_t size) {
    std::vector<std::uint8_t> result(size);
    uLongf length = size;
    if (uncompress(result.data(), &length, bytes.data(), static_cast<uLong>(bytes.size())) != Z_OK) {
        return {};
    }
    result.resize(length);
    return result;
}

/// Approximate size of an object in memory.
std::size_t sizeOf(const si::CarouselObject& object) {
    std::size_t size = sizeof object + object.key.size() + object.associationTags.size() * sizeof(std::uint16_t);
    for (const si::CarouselObject::Entry& entry : object.entries) {
        size += sizeof entry + entry.name.size() + entry.object.key.size();
    }
    for (const si::CarouselObject::EventName& event : object.events) {
        size += sizeof event + event.name.size();
    }
    return size;
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
        const bool fits = listed.size <= kLargestModule && listed.originalSize.value_or(0) <= kLargestModule &&
                          listed.originalSize.value_or(0) / kMostCompressed <= listed.size;
        const auto known = modules.find({info.downloadId, listed.id});
        const bool isSame = known != modules.end() && known->second.info.version == listed.version &&
                            known->second.info.size == listed.size && known->second.blockSize == info.blockSize;
        if (isSame || !fits || info.blockSize == 0 || (known == modules.end() && modules.size() >= kMostModules)) {
            continue;
        }
        Module& module = modules[{info.downloadId, listed.id}];
        hasLost = hasLost || module.isComplete;
        drop(module);
        module = {};
        module.info = listed;
        module.blockSize = info.blockSize;
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
    const std::size_t begin = std::size_t{block.number} * module.blockSize;
    if (begin >= module.info.size ||
        block.data.size != std::min<std::size_t>(module.blockSize, module.info.size - begin) ||
        held + block.data.size > kMostHeld) {
        return false;
    }
    if (module.blocks.try_emplace(block.number, block.data.data, block.data.data + block.data.size).second) {
        held += block.data.size;
    }
    if (module.blocks.size() * module.blockSize < module.info.size) {
        return false;
    }
    finish(module);
    goOnIn(id);
    return true;
}

void EventObjects::drop(Module& module) {
    for (const auto& entry : module.blocks) {
        held -= entry.second.size();
    }
    kept -= module.kept;
    module.blocks.clear();
    module.objects.clear();
    module.kept = 0;
}

void EventObjects::finish(Module& module) {
    std::vector<std::uint8_t> bytes;
    for (const auto& entry : module.blocks) {
        bytes.insert(bytes.end(), entry.second.begin(), entry.second.end());
    }
    drop(module);
    if (module.info.originalSize) {
        bytes = inflated(bytes, *module.info.originalSize);
    }
    for (si::CarouselObject& object : si::eventObjects(bytes)) {
        keep(module, std::move(object));
    }
    module.isComplete = true;
}

/// Drops a directory's entries for files: they are the majority and lead to no events.
void EventObjects::keep(Module& module, si::CarouselObject object) {
    auto& entries = object.entries;
    entries.erase(std::remove_if(entries.begin(), entries.end(),
                                 [](const auto& entry) {
                                     return entry.kind != si::CarouselObject::Kind::directory &&
                                            entry.kind != si::CarouselObject::Kind::streamEvent;
                                 }),
                  entries.end());
    entries.shrink_to_fit();
    const std::size_t size = sizeOf(object);
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
