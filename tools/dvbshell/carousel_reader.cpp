// Assembles modules and walks through directories.
#include "carousel_reader.h"

#include <zlib.h>

#include <algorithm>
#include <utility>

namespace dvbshell {

namespace {

constexpr std::size_t kMostBytes = 16U << 20U;  // of a module
constexpr std::size_t kMostCompressed = 100;    // times; real modules stay far below
constexpr std::size_t kMostBytesInAll = 128U << 20U;
constexpr std::size_t kMostModules = 4096;
constexpr std::size_t kMostGateways = 64;
constexpr std::size_t kMostBlocks = 1U << 16U;  // block numbers have 16 bits
constexpr std::size_t kMostDepth = 32;
constexpr std::size_t kMostLines = 10000;

std::vector<std::uint8_t> uncompressed(const std::string& bytes, std::size_t size) {
    std::vector<std::uint8_t> result(size);
    uLongf length = result.size();
    const int code = uncompress(result.data(), &length, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size());
    result.resize(code == Z_OK ? length : 0);
    return result;
}

CarouselNews newsOf(const si::ObjectReference& gateway) {
    return {"carousel " + std::to_string(gateway.carouselId) + "  service gateway in module " +
                std::to_string(gateway.moduleId),
            {namedValue("carousel_id", gateway.carouselId), namedValue("module_id", gateway.moduleId)}};
}

CarouselNews newsOf(const si::DownloadInfo& info, const si::DownloadInfo::Module& module) {
    const std::string text = "carousel " + std::to_string(info.downloadId) + "  module " + std::to_string(module.id) +
                             ", version " + std::to_string(module.version) + ", " + std::to_string(module.size) +
                             " bytes" +
                             (module.originalSize ? ", compressed from " + std::to_string(*module.originalSize) : "");
    return {text,
            {namedValue("carousel_id", info.downloadId), namedValue("module_id", module.id),
             namedValue("module_version", module.version), namedValue("module_size", module.size)}};
}

std::string describeEvents(const si::CarouselObject& object) {
    std::string text;
    for (const si::CarouselObject::EventName& event : object.events) {
        text += (text.empty() ? ": " : ", ") + event.name + " (" + std::to_string(event.id) + ")";
    }
    return text;
}

}  // namespace

std::size_t CarouselReader::Module::blockCount() const {
    return blockSize == 0 ? 0 : (info.size + blockSize - 1U) / blockSize;
}

bool CarouselReader::Module::isReadable() const {
    const std::size_t original = info.originalSize.value_or(0);
    return info.size <= kMostBytes && original <= kMostBytes && original / kMostCompressed <= info.size &&
           blockCount() != 0 && blockCount() <= kMostBlocks;
}

std::size_t CarouselReader::Module::cost() const {
    constexpr std::size_t kPlaceOfABlock = 96;  // beside its bytes
    const std::size_t bytes = std::max(info.size, info.originalSize.value_or(0));
    return isReadable() ? bytes + blockCount() * kPlaceOfABlock : 0;
}

void CarouselReader::Module::read() {
    std::string bytes;
    for (const auto& [number, block] : blocks) {
        bytes += block;
    }
    blocks.clear();
    arrived = true;
    objects = info.originalSize ? si::eventObjects(uncompressed(bytes, *info.originalSize))
                                : si::eventObjects(std::vector<std::uint8_t>(bytes.begin(), bytes.end()));
}

std::vector<CarouselNews> CarouselReader::add(const std::string& section) {
    if (const std::optional<si::DownloadBlock> block = si::downloadBlock(section)) {
        addBlock(*block);
        return {};
    }
    if (const std::optional<si::DownloadInfo> info = si::downloadInfo(section)) {
        return addInfo(*info);
    }
    const std::optional<si::ObjectReference> gateway = si::serviceGateway(section);
    return gateway ? addGateway(*gateway) : std::vector<CarouselNews>();
}

std::vector<CarouselNews> CarouselReader::addGateway(const si::ObjectReference& gateway) {
    const auto known = gateways.find(gateway.carouselId);
    const bool isOld = known != gateways.end() && known->second == gateway;
    if (isOld || (known == gateways.end() && gateways.size() == kMostGateways)) {
        return {};
    }
    gateways[gateway.carouselId] = gateway;
    return {newsOf(gateway)};
}

std::vector<CarouselNews> CarouselReader::addInfo(const si::DownloadInfo& info) {
    std::vector<CarouselNews> news;
    for (const si::DownloadInfo::Module& each : info.modules) {
        const Key key{info.downloadId, each.id};
        const auto known = modules.find(key);
        if (known != modules.end() && known->second.info.version == each.version &&
            known->second.info.size == each.size) {
            continue;
        }
        Module module;
        module.info = each;
        module.blockSize = info.blockSize;
        module.arrived = !module.isReadable();  // nothing is left to wait for
        if (hasRoomFor(key, module)) {
            modules[key] = std::move(module);
            news.push_back(newsOf(info, each));
        } else if (!std::exchange(leavesOut, true)) {
            news.push_back({"modules are left out: at most " + std::to_string(kMostModules) + " are read, of " +
                            std::to_string(kMostBytesInAll >> 20U) + " MiB in all"});
        }
    }
    return news;
}

bool CarouselReader::hasRoomFor(const Key& key, const Module& module) const {
    std::size_t count = 1;
    std::size_t bytes = module.cost();
    for (const auto& [other, each] : modules) {
        if (other != key) {
            ++count;
            bytes += each.cost();
        }
    }
    return count <= kMostModules && bytes <= kMostBytesInAll;
}

void CarouselReader::addBlock(const si::DownloadBlock& block) {
    const auto found = modules.find({block.downloadId, block.moduleId});
    if (found == modules.end()) {
        return;
    }
    Module& module = found->second;
    const bool isWanted = !module.arrived && module.info.version == block.moduleVersion &&
                          block.number < module.blockCount() && block.data.size <= module.blockSize;
    if (isWanted) {
        module.blocks[block.number].assign(reinterpret_cast<const char*>(block.data.data), block.data.size);
        if (module.blocks.size() == module.blockCount()) {
            module.read();
        }
    }
}

bool CarouselReader::isComplete() const {
    return !gateways.empty() && std::all_of(gateways.begin(), gateways.end(), [this](const auto& each) {
        return hasModuleOf(each.first);
    }) && std::all_of(modules.begin(), modules.end(), [this](const auto& each) {
        return each.second.arrived && gateways.count(each.first.first) != 0;
    });
}

bool CarouselReader::hasModuleOf(std::uint32_t carousel) const {
    const auto first = modules.lower_bound({carousel, 0});
    return first != modules.end() && first->first.first == carousel;
}

std::string CarouselReader::progress() const {
    const auto arrived =
        std::count_if(modules.begin(), modules.end(), [](const auto& each) { return each.second.arrived; });
    return std::to_string(arrived) + " of " + std::to_string(modules.size()) + " modules have arrived";
}

const si::CarouselObject* CarouselReader::find(const si::ObjectReference& reference) const {
    const auto module = modules.find({reference.carouselId, reference.moduleId});
    if (module == modules.end()) {
        return nullptr;
    }
    const std::vector<si::CarouselObject>& objects = module->second.objects;
    const auto found = std::find_if(objects.begin(), objects.end(),
                                    [&reference](const auto& object) { return object.key == reference.key; });
    return found == objects.end() ? nullptr : &*found;
}

std::vector<std::string> CarouselReader::paths() const {
    std::vector<std::string> lines;
    for (const auto& [carousel, gateway] : gateways) {
        walk(gateway, gateways.size() == 1 ? "/" : "carousel " + std::to_string(carousel) + "  /", 0, lines);
    }
    return lines;
}

void CarouselReader::walk(const si::ObjectReference& directory, const std::string& path, std::size_t depth,
                          std::vector<std::string>& lines) const {
    const si::CarouselObject* const object = find(directory);
    if (object == nullptr || depth == kMostDepth) {
        lines.push_back(path + "  " + (object == nullptr ? "has not arrived" : "has more than is shown"));
        return;
    }
    for (const si::CarouselObject::Entry& entry : object->entries) {
        if (lines.size() >= kMostLines) {
            if (lines.size() == kMostLines) {
                lines.push_back(path + "  has more than is shown");
            }
            return;
        }
        const std::string name = path + entry.name;
        if (entry.kind == si::CarouselObject::Kind::directory) {
            lines.push_back(name + "/");
            walk(entry.object, name + "/", depth + 1, lines);
            continue;
        }
        const si::CarouselObject* const events =
            entry.kind == si::CarouselObject::Kind::streamEvent ? find(entry.object) : nullptr;
        lines.push_back(name + (entry.kind == si::CarouselObject::Kind::streamEvent ? "  stream events" : "") +
                        (events == nullptr ? "" : describeEvents(*events)));
    }
}

}  // namespace dvbshell
