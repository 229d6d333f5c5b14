// Puts carousels together.
#include "si/carousel.h"

#include <algorithm>
#include <utility>

#include "module_contents.h"

namespace si {

using Kind = CarouselNews::Kind;

/// A module that is listed, and what has come of it.
struct ObjectCarousel::Reading {
    DownloadInfo::Module listed;
    std::uint16_t blockSize;
    ModuleBlocks blocks;
    HeldBytes held;
    bool isTold = false;  // that it does not fit

    void empty() {
        blocks = ModuleBlocks(listed.size, blockSize);
        held.set(0);
    }
};

namespace {

bool isSame(const DownloadInfo::Module& one, const DownloadInfo::Module& other) {
    return one.id == other.id && one.size == other.size && one.version == other.version &&
           one.originalSize == other.originalSize;
}

bool areSame(const std::vector<DownloadInfo::Module>& some, const std::vector<DownloadInfo::Module>& others) {
    return std::equal(some.begin(), some.end(), others.begin(), others.end(), isSame);
}

std::string nameOf(const DownloadInfo::Module& module) {
    return "module " + std::to_string(module.id) + ", version " + std::to_string(module.version);
}

/// Why a module is not read at all; empty if it is.
std::string excessOf(const DownloadInfo::Module& module, std::uint16_t blockSize) {
    const std::size_t original = module.originalSize.value_or(0);
    const std::size_t blocks = blockCount(module.size, blockSize);
    if (module.size > ObjectCarousel::kLargestModule || original > ObjectCarousel::kLargestModule) {
        return "it has more than " + std::to_string(ObjectCarousel::kLargestModule >> 20U) + " MiB";
    }
    if (original / ObjectCarousel::kMostCompressed > module.size) {
        return "it is compressed more than " + std::to_string(ObjectCarousel::kMostCompressed) + " times";
    }
    return (blocks == 0 && module.size != 0) || blocks > kMostBlocks ? "its blocks cannot be numbered" : "";
}

}  // namespace

ObjectCarousel::ObjectCarousel(std::size_t newMostBytes, ByteSum newSum)
    : mostBytes(newMostBytes), sum(std::move(newSum)) {}
ObjectCarousel::ObjectCarousel(ObjectCarousel&&) noexcept = default;
ObjectCarousel::~ObjectCarousel() = default;

std::optional<std::uint32_t> ObjectCarousel::carouselId() const {
    return forming.gateway ? std::optional(forming.gateway->carouselId) : std::nullopt;
}

std::size_t ObjectCarousel::heldBytes() const {
    return *sum;
}

std::vector<CarouselNews> ObjectCarousel::onSection(From stream, Bytes section) {
    News news;
    received += section.size;
    if (const std::optional<DownloadBlock> block = downloadBlock(section)) {
        onBlock(*block, news);
    } else if (const std::optional<DownloadInfo> info = downloadInfo(section)) {
        onInfo(*info, news);
    } else if (stream == From::root) {
        if (const std::optional<ObjectReference> gateway = serviceGateway(section)) {
            onGateway(*gateway, news);
        }
    }
    lookSoon(news);
    return news;
}

void ObjectCarousel::onGateway(const ObjectReference& newGateway, News& news) {
    if (!forming.gateway || !(*forming.gateway == newGateway)) {
        forming.gateway = newGateway;
        ++changes;
        isStale = true;
        news.push_back({Kind::gateway, newGateway.moduleId,
                        "carousel " + std::to_string(newGateway.carouselId) + ", service gateway in module " +
                            std::to_string(newGateway.moduleId)});
        if (!newGateway.delivery) {
            news.push_back({Kind::warning, 0, "the service gateway does not say which list has its module"});
        }
    }
    if (newGateway.delivery) {
        addTag(newGateway.delivery->associationTag);
    }
    if (std::exchange(gatewayHeardAt, changes) != changes) {
        partial.reset();
    }
    publishIfConfirmed(news);
}

/// A stream may have messages of other carousels too. The carousel's own have its number, or are those that the gateway
/// names; else the first ones count.
bool ObjectCarousel::isOurs(const DownloadInfo& info) {
    if (downloadId == info.downloadId) {
        return true;
    }
    const bool namesList = forming.gateway && forming.gateway->delivery;
    const std::uint16_t list = namesList ? identificationOf(forming.gateway->delivery->transactionId) : 0;
    const auto fit = [&](std::uint32_t download, bool hasList) {
        return forming.gateway && download == forming.gateway->carouselId ? 2 : namesList && hasList ? 1 : 0;
    };
    const bool isNamed = list == identificationOf(info.transactionId);
    if (downloadId && fit(info.downloadId, isNamed) <= fit(*downloadId, lists.count(list) != 0)) {
        return false;
    }
    downloadId = info.downloadId;
    lists.clear();
    readings.clear();
    forming.modules.clear();
    forming.lists.clear();
    return true;
}

void ObjectCarousel::onInfo(const DownloadInfo& info, News& news) {
    if (!isOurs(info)) {
        return;
    }
    const std::uint16_t identification = identificationOf(info.transactionId);
    const auto known = lists.find(identification);
    if (known == lists.end() || known->second.blockSize != info.blockSize ||
        !areSame(known->second.modules, info.modules)) {
        takeList(identification, info, news);
    }
    if (std::exchange(lists[identification].heardAt, changes) != changes) {
        partial.reset();
    }
    if (forming.gateway && forming.gateway->carouselId != info.downloadId && !std::exchange(hasWarnedOfNumber, true)) {
        news.push_back({Kind::warning, 0,
                        "the messages of carousel " + std::to_string(forming.gateway->carouselId) +
                            " have the number " + std::to_string(info.downloadId)});
    }
    publishIfConfirmed(news);
}

void ObjectCarousel::takeList(std::uint16_t identification, const DownloadInfo& info, News& news) {
    if (lists.count(identification) == 0 && lists.size() == kMostLists) {
        forgetOldestList();
    }
    List& list = lists[identification];
    std::set<std::uint16_t> gone;
    for (const DownloadInfo::Module& module : list.modules) {
        gone.insert(module.id);
    }
    for (const DownloadInfo::Module& module : info.modules) {
        gone.erase(module.id);
    }
    for (const std::uint16_t id : gone) {
        forgetModule(id, identification);
    }
    list.modules = info.modules;
    list.blockSize = info.blockSize;
    forming.lists.insert(identification);
    ++changes;
    isStale = true;
    news.push_back({Kind::list, 0,
                    "list " + std::to_string(identification >> 1U) + " of carousel " + std::to_string(info.downloadId) +
                        ": " + std::to_string(info.modules.size()) + " modules"});
    for (const DownloadInfo::Module& listed : info.modules) {
        takeModule(identification, info.blockSize, listed, news);
    }
}

/// A module that is listed as before keeps what has come of it.
void ObjectCarousel::takeModule(std::uint16_t identification, std::uint16_t blockSize,
                                const DownloadInfo::Module& listed, News& news) {
    const auto known = readings.find(listed.id);
    if (known == readings.end() && readings.size() == kMostModules) {
        news.push_back({Kind::leftOut, listed.id,
                        nameOf(listed) + ": there are more than " + std::to_string(kMostModules) + " modules"});
        return;
    }
    if (listed.associationTag) {
        addTag(*listed.associationTag);
    }
    CarouselTree::Module& module = forming.modules[listed.id];
    module.list = identification;
    if (known != readings.end() && isSame(known->second->listed, listed) && known->second->blockSize == blockSize) {
        return;
    }
    module = {listed.version, identification};
    std::unique_ptr<Reading>& reading = readings[listed.id];
    reading.reset(new Reading{listed, blockSize, ModuleBlocks(listed.size, blockSize), HeldBytes(sum)});
    const std::string excess = excessOf(listed, blockSize);
    if (!excess.empty()) {
        leaveOut(*reading, excess, news);
    } else if (listed.size == 0) {
        finish(*reading, news);
    }
}

/// Another list may have the module by now.
void ObjectCarousel::forgetModule(std::uint16_t id, std::uint16_t identification) {
    const auto module = forming.modules.find(id);
    if (module != forming.modules.end() && module->second.list == identification) {
        forming.modules.erase(module);
        readings.erase(id);
    }
}

void ObjectCarousel::forgetOldestList() {
    const auto isOlder = [](const auto& one, const auto& other) { return one.second.heardAt < other.second.heardAt; };
    const auto oldest = std::min_element(lists.begin(), lists.end(), isOlder);
    for (const DownloadInfo::Module& module : oldest->second.modules) {
        forgetModule(module.id, oldest->first);
    }
    forming.lists.erase(oldest->first);
    lists.erase(oldest);
}

/// The carousel repeats all blocks, so one that comes before its list comes again.
void ObjectCarousel::onBlock(const DownloadBlock& block, News& news) {
    const auto found = downloadId == block.downloadId ? readings.find(block.moduleId) : readings.end();
    if (found == readings.end() || found->second->listed.version != block.moduleVersion) {
        return;
    }
    Reading& reading = *found->second;
    const CarouselTree::Module& module = forming.modules[block.moduleId];
    if (module.contents || module.isLeftOut || reading.blocks.has(block.number)) {
        return;
    }
    const std::string why = reading.blocks.disagrees(block);
    if (!why.empty()) {
        drop(reading, why, news);
        return;
    }
    reading.blocks.add(block);
    reading.held.set(reading.blocks.cost());
    if (*sum > mostBytes) {
        leaveOut(reading, "no memory is left for it", news);
    } else if (reading.blocks.isComplete()) {
        finish(reading, news);
    }
}

void ObjectCarousel::finish(Reading& reading, News& news) {
    const std::uint32_t original = reading.listed.originalSize.value_or(0);
    const std::size_t room = mostBytes - std::min<std::size_t>(mostBytes, *sum);
    if (original > room) {
        leaveOut(reading, "no memory is left for it", news);
        return;
    }
    std::string error;
    bool isTooMuch = false;
    std::shared_ptr<const ModuleContents> contents =
        contentsOf(reading.blocks, reading.listed, room - original, sum, error, isTooMuch);
    if (isTooMuch) {
        leaveOut(reading, error, news);
    } else if (!contents) {
        drop(reading, error, news);
    } else {
        reading.empty();
        forming.modules[reading.listed.id].contents = std::move(contents);
        news.push_back({Kind::module, reading.listed.id,
                        nameOf(reading.listed) + ": " + std::to_string(reading.listed.size) + " bytes"});
        settle(reading.listed.id);
    }
}

/// What was sent in between may be wrong, so the module is read from its next block on. Told once for each version.
void ObjectCarousel::drop(Reading& reading, const std::string& why, News& news) {
    reading.empty();
    if (!std::exchange(reading.isTold, true)) {
        news.push_back({Kind::dropped, reading.listed.id, nameOf(reading.listed) + ": " + why});
    }
}

void ObjectCarousel::leaveOut(Reading& reading, const std::string& why, News& news) {
    reading.empty();
    forming.modules[reading.listed.id].isLeftOut = true;
    if (!std::exchange(reading.isTold, true)) {
        news.push_back({Kind::leftOut, reading.listed.id, nameOf(reading.listed) + ": " + why});
    }
    settle(reading.listed.id);
}

void ObjectCarousel::settle(std::uint16_t module) {
    partial.reset();
    if (awaited.erase(module) != 0 && awaited.empty()) {
        isStale = true;
    }
}

void ObjectCarousel::addTag(std::uint16_t tag) {
    if (tags.size() < kMostTags) {
        tags.insert(tag);
    }
}

/// A carousel that changes all the time would make every section cost a look through all directories. So as many bytes
/// come between two looks as the work of one takes time.
void ObjectCarousel::lookSoon(News& news) {
    constexpr std::size_t kBytesForAnEntry = 4;
    if (isStale && workOfLook * kBytesForAnEntry <= received) {
        look();
        publishIfConfirmed(news);
    }
}

/// Notes what is missing. The next look follows when all of that has come, so there are no more of them than the
/// directories are deep.
void ObjectCarousel::look() {
    isStale = false;
    received = 0;
    workOfLook = forming.modules.size();
    awaited.clear();
    neededLists.clear();
    bool isMissing = !forming.gateway;
    forming.visit([&](const CarouselTree::Visited& visited) {
        ++workOfLook;
        if (visited.reference.delivery) {
            addTag(visited.reference.delivery->associationTag);
        }
        const auto module = forming.modules.find(visited.reference.moduleId);
        const bool isAwaited = visited.found.state == CarouselTree::State::awaited;
        isMissing = isMissing || isAwaited;
        if (module != forming.modules.end() && !visited.reference.elsewhere) {
            neededLists.insert(module->second.list);
            if (isAwaited) {
                awaited.insert(module->first);
            }
        }
    });
    awaitsConfirmation = !isMissing;
}

bool ObjectCarousel::isConfirmed(std::uint16_t identification) const {
    const auto list = lists.find(identification);
    return list != lists.end() && list->second.heardAt == changes;
}

void ObjectCarousel::publishIfConfirmed(News& news) {
    if (!awaitsConfirmation || isStale || gatewayHeardAt != changes ||
        !std::all_of(neededLists.begin(), neededLists.end(),
                     [this](std::uint16_t list) { return isConfirmed(list); })) {
        return;
    }
    awaitsConfirmation = false;
    if (published && published->gateway == forming.gateway && published->modules == forming.modules) {
        return;
    }
    CarouselTree tree = forming;
    tree.isComplete_ = true;
    published = std::make_shared<const CarouselTree>(std::move(tree));
    partial.reset();
    news.push_back({Kind::tree, 0, "carousel " + std::to_string(forming.gateway->carouselId) + " is complete"});
    retryLeftOut();
}

/// The tree that has just ended may have made room.
void ObjectCarousel::retryLeftOut() {
    for (auto& [id, module] : forming.modules) {
        const Reading& reading = *readings[id];
        const std::size_t size = std::max(reading.listed.size, reading.listed.originalSize.value_or(0));
        if (module.isLeftOut && excessOf(reading.listed, reading.blockSize).empty() && *sum + size <= mostBytes) {
            module.isLeftOut = false;
            isStale = true;
        }
    }
}

/// Before the first complete tree, shows only what is of one state of the carousel.
std::shared_ptr<const CarouselTree> ObjectCarousel::tree() {
    if (published) {
        return published;
    }
    if (!partial) {
        CarouselTree shown = forming;
        if (gatewayHeardAt != changes) {
            shown.gateway.reset();
        }
        for (auto& [id, module] : shown.modules) {
            if (!isConfirmed(module.list)) {
                module.contents.reset();
                module.isLeftOut = false;
                shown.lists.erase(module.list);
            }
        }
        partial = std::make_shared<const CarouselTree>(std::move(shown));
    }
    return partial;
}

std::vector<ObjectCarousel::ModuleState> ObjectCarousel::modules() const {
    std::vector<ModuleState> states;
    for (const auto& [id, module] : forming.modules) {
        const Reading& reading = *readings.at(id);
        const std::size_t blocks = blockCount(reading.listed.size, reading.blockSize);
        const std::size_t here = module.contents ? blocks : reading.blocks.count();
        states.push_back({id, module.version, reading.listed.size, blocks, here, module.isLeftOut});
    }
    return states;
}

}  // namespace si
