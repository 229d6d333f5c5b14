// Assembles modules and walks through directories.
#include "carousel_reader.h"

#include <zlib.h>

#include <algorithm>

namespace dvbshell {

namespace {

constexpr std::size_t kMostBytes = 16U << 20U;
constexpr std::size_t kMostDepth = 32;
constexpr std::size_t kMostLines = 10000;

std::vector<std::uint8_t> uncompressed(const std::string& bytes, std::size_t size) {
    std::vector<std::uint8_t> result(std::min(size, kMostBytes));
    uLongf length = result.size();
    const int code = uncompress(result.data(), &length, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size());
    result.resize(code == Z_OK ? length : 0);
    return result;
}

std::string describe(const si::DownloadInfo& info, const si::DownloadInfo::Module& module) {
    return "carousel " + std::to_string(info.downloadId) + "  module " + std::to_string(module.id) + ", version " +
           std::to_string(module.version) + ", " + std::to_string(module.size) + " bytes" +
           (module.originalSize ? ", compressed from " + std::to_string(*module.originalSize) : "");
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

void CarouselReader::Module::read() {
    std::string bytes;
    for (const auto& [number, block] : blocks) {
        bytes += block;
    }
    blocks.clear();
    arrived = true;
    objects = info.originalSize ? si::carouselObjects(uncompressed(bytes, *info.originalSize))
                                : si::carouselObjects(std::vector<std::uint8_t>(bytes.begin(), bytes.end()));
}

std::vector<std::string> CarouselReader::add(const std::string& section) {
    if (const std::optional<si::DownloadBlock> block = si::downloadBlock(section)) {
        addBlock(*block);
        return {};
    }
    if (const std::optional<si::DownloadInfo> info = si::downloadInfo(section)) {
        return addInfo(*info);
    }
    const std::optional<si::ObjectReference> found = si::serviceGateway(section);
    if (!found || (gateway && *gateway == *found)) {
        return {};
    }
    gateway = found;
    return {"carousel " + std::to_string(found->carouselId) + "  service gateway in module " +
            std::to_string(found->moduleId)};
}

std::vector<std::string> CarouselReader::addInfo(const si::DownloadInfo& info) {
    std::vector<std::string> lines;
    for (const si::DownloadInfo::Module& each : info.modules) {
        const auto [found, isNew] = modules.try_emplace({info.downloadId, each.id});
        Module& module = found->second;
        if (!isNew && module.info.version == each.version && module.info.size == each.size) {
            continue;
        }
        module = Module();
        module.info = each;
        module.blockSize = info.blockSize;
        lines.push_back(describe(info, each));
    }
    return lines;
}

void CarouselReader::addBlock(const si::DownloadBlock& block) {
    const auto found = modules.find({block.downloadId, block.moduleId});
    if (found == modules.end()) {
        return;
    }
    Module& module = found->second;
    const bool isWanted = !module.arrived && module.info.version == block.moduleVersion &&
                          module.info.size <= kMostBytes && block.number < module.blockCount();
    if (isWanted) {
        module.blocks[block.number].assign(reinterpret_cast<const char*>(block.data.data), block.data.size);
        if (module.blocks.size() == module.blockCount()) {
            module.read();
        }
    }
}

bool CarouselReader::isComplete() const {
    return gateway && !modules.empty() &&
           std::all_of(modules.begin(), modules.end(), [](const auto& each) { return each.second.arrived; });
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
    if (gateway) {
        walk(*gateway, "/", 0, lines);
    }
    return lines;
}

void CarouselReader::walk(const si::ObjectReference& directory, const std::string& path, std::size_t depth,
                          std::vector<std::string>& lines) const {
    const si::CarouselObject* const object = find(directory);
    if (object == nullptr || depth == kMostDepth || lines.size() >= kMostLines) {
        lines.push_back(path + "  " + (object == nullptr ? "has not arrived" : "has more than is shown"));
        return;
    }
    for (const si::CarouselObject::Entry& entry : object->entries) {
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
