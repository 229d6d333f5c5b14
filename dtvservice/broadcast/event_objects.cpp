// Putting modules together and looking through directories.
#include "event_objects.h"

#include <zlib.h>

#include <algorithm>

namespace broadcast {

namespace {

/// What a broadcast may make this process keep: modules of files are far below, and names are few.
constexpr std::size_t kLargestModule = 8 * 1024 * 1024;
constexpr std::size_t kMostModules = 4096;
constexpr std::size_t kDeepest = 16;
constexpr std::size_t kMostHeld = 32 * 1024 * 1024;

std::vector<std::uint8_t> inflated(const std::vector<std::uint8_t>& bytes, std::uint32_t size) {
    std::vector<std::uint8_t> result(size);
    uLongf length = size;
    if (uncompress(result.data(), &length, bytes.data(), static_cast<uLong>(bytes.size())) != Z_OK) {
        return {};
    }
    result.resize(length);
    return result;
}

}  // namespace

bool EventObjects::onSection(std::uint16_t pid, si::Bytes section) {
    bool changed = false;
    if (const std::optional<si::DownloadBlock> block = si::downloadBlock(section)) {
        changed = onBlock(*block);
    } else if (const std::optional<si::DownloadInfo> info = si::downloadInfo(section)) {
        changed = onInfo(*info);
    } else if (const std::optional<si::ObjectReference> gateway = si::serviceGateway(section)) {
        const auto [known, isNew] = gateways.try_emplace(pid, *gateway);
        changed = isNew || !(known->second == *gateway);
        known->second = *gateway;
    }
    if (changed) {
        lookThrough();
    }
    return changed;
}

bool EventObjects::onInfo(const si::DownloadInfo& info) {
    bool changed = false;
    for (const si::DownloadInfo::Module& listed : info.modules) {
        const bool fits = listed.size <= kLargestModule && listed.originalSize.value_or(0) <= kLargestModule;
        const auto known = modules.find({info.downloadId, listed.id});
        const bool isSame = known != modules.end() && known->second.info.version == listed.version &&
                            known->second.info.size == listed.size && known->second.blockSize == info.blockSize;
        if (isSame || !fits || info.blockSize == 0 || (known == modules.end() && modules.size() >= kMostModules)) {
            continue;
        }
        Module& module = modules[{info.downloadId, listed.id}];
        drop(module);
        module = {};
        module.info = listed;
        module.blockSize = info.blockSize;
        changed = true;
    }
    return changed;
}

/// A block of a module that nothing leads to yet comes again.
bool EventObjects::onBlock(const si::DownloadBlock& block) {
    const ModuleId id = {block.downloadId, block.moduleId};
    const auto found = modules.find(id);
    if (missing.count(id) == 0 || found == modules.end() || found->second.info.version != block.moduleVersion) {
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
    return true;
}

void EventObjects::drop(Module& module) {
    for (const auto& entry : module.blocks) {
        held -= entry.second.size();
    }
    module.blocks.clear();
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
    for (si::CarouselObject& object : si::carouselObjects(bytes)) {
        const std::string key = object.key;
        module.objects.try_emplace(key, std::move(object));
    }
    module.isComplete = true;
}

void EventObjects::lookThrough() {
    events_.clear();
    missing.clear();
    for (const auto& [pid, gateway] : gateways) {
        visited.clear();
        visit(pid, gateway, {}, 0);
    }
}

/// An object that several entries lead to is known by the first of them; directories may lead in circles.
void EventObjects::visit(std::uint16_t pid, const si::ObjectReference& reference, const std::string& path,
                         std::size_t depth) {
    const ModuleId id = {reference.carouselId, reference.moduleId};
    if (depth > kDeepest || !visited.emplace(id, reference.key).second) {
        return;
    }
    const auto module = modules.find(id);
    if (module == modules.end() || !module->second.isComplete) {
        missing.insert(id);
        return;
    }
    const auto object = module->second.objects.find(reference.key);
    if (object == module->second.objects.end()) {
        return;
    }
    for (const si::CarouselObject::EventName& event : object->second.events) {
        events_.push_back({pid, path, event.name, event.id, object->second.associationTags});
    }
    for (const si::CarouselObject::Entry& entry : object->second.entries) {
        if (entry.kind != si::CarouselObject::Kind::other) {
            visit(pid, entry.object, path.empty() ? entry.name : path + "/" + entry.name, depth + 1);
        }
    }
}

}  // namespace broadcast
