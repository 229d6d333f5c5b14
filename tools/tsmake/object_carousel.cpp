// Builds object carousels.
#include "object_carousel.h"

#include <algorithm>
#include <stdexcept>

namespace tsmake {

namespace {

using namespace biop;

constexpr std::uint64_t kTicks = 27000000;
constexpr std::uint32_t kFromServer = 0x80000000;
constexpr std::size_t kModulesOfAList = 80;
constexpr std::uint16_t kDirectories = 1;

std::uint16_t listOf(std::uint16_t module) {
    return static_cast<std::uint16_t>(((module - 1U) / kModulesOfAList + 1U) << 1U);
}

/// The version has the bits above the identification (TR 101 202, clause 4.7.9).
std::uint32_t transactionId(std::uint16_t identification, std::size_t version) {
    constexpr std::uint32_t kVersions = 0x4000;
    const auto number = static_cast<std::uint32_t>(version % kVersions);
    return kFromServer | number << 16U | identification | (number & 1U);
}

std::pair<std::string, std::string> parentAndName(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::pair(std::string(), path)
                                      : std::pair(path.substr(0, slash), path.substr(slash + 1));
}

/// One version in the making.
class Layout {
public:
    Layout(const Carousel& newCarousel, const CarouselVersion& version) : carousel(newCarousel) {
        directoryOf("");
        modules.push_back({kDirectories, 0, {}});
        startModule();
        for (const auto& [path, content] : version.files) {
            const auto type = carousel.contentTypes.find(path);
            add(path, kFile, [&, &bytes = content](const std::string& key) {
                return file(key, bytes, type == carousel.contentTypes.end() ? std::string() : type->second);
            });
        }
        for (const CarouselEvents& events : carousel.eventObjects) {
            add(events.path, kStreamEvent,
                [&events](const std::string& key) { return eventObject(key, events.idsByName, events.streamTag); });
        }
        if (modules.back().bytes.empty()) {
            modules.pop_back();
        }
        writeDirectories();
    }

    std::vector<Module> modules;

private:
    struct Directory {
        std::string key;
        std::vector<Binding> bindings = {};
    };

    Place placeOf(std::uint16_t module, const std::string& key) const {
        return {carousel.id, carousel.tag, listOf(module), module, key};
    }

    /// Makes the directory, and those above it.
    Directory& directoryOf(const std::string& path) {
        const auto found = directories.find(path);
        if (found != directories.end()) {
            return found->second;
        }
        const std::string key = be(directories.size() + 1, 4);
        directories.emplace(path, Directory{key});
        if (!path.empty()) {
            const auto [parent, name] = parentAndName(path);
            directoryOf(parent).bindings.push_back({name, kDirectory, placeOf(kDirectories, key)});
        }
        return directories.at(path);
    }

    void startModule() {
        constexpr std::size_t kMostModules = 0xFFFF;
        if (modules.size() == kMostModules) {
            throw std::length_error("a carousel has too many modules");
        }
        modules.push_back({static_cast<std::uint16_t>(modules.size() + 1), 0, {}});
        objects = 0;
    }

    template <typename Write>
    void add(const std::string& path, const std::string& kind, Write write) {
        std::string bytes = write(be(objects + 1, 4));
        if (objects != 0 && modules.back().bytes.size() + bytes.size() > carousel.moduleSize) {
            startModule();
            bytes = write(be(objects + 1, 4));
        }
        const auto [parent, name] = parentAndName(path);
        directoryOf(parent).bindings.push_back({name, kind, placeOf(modules.back().id, be(objects + 1, 4))});
        modules.back().bytes += bytes;
        ++objects;
    }

    void writeDirectories() {
        for (const auto& [path, each] : directories) {
            modules[0].bytes += directory(path.empty() ? kServiceGateway : kDirectory, each.key, each.bindings);
        }
    }

    const Carousel& carousel;
    std::map<std::string, Directory> directories;  // by path
    std::size_t objects = 0;                       // in the last module
};

CarouselState stateOf(const Carousel& carousel, std::size_t number, const CarouselState* before) {
    const CarouselVersion& version = carousel.versions[number];
    const std::uint16_t blockTag = carousel.blockTag.value_or(carousel.tag);
    CarouselState state;
    state.second = version.second;
    state.list = {carousel.id, transactionId(0, number), carousel.blockSize, blockTag};
    const Layout layout(carousel, version);
    for (const Module& module : layout.modules) {
        Module sent = carousel.isCompressed ? compressed(module) : module;
        constexpr std::size_t kMostBlocks = 0x10000;
        if (blockCount(state.list, sent) > kMostBlocks) {
            throw std::length_error("a module of a carousel has too many blocks");
        }
        const std::size_t place = state.modules.size();
        const bool isSame =
            before != nullptr && place < before->modules.size() && before->modules[place].bytes == sent.bytes;
        sent.version = isSame ? before->modules[place].version : static_cast<std::uint8_t>(number);
        state.modules.push_back(std::move(sent));
    }
    const Place gateway = {carousel.id, carousel.tag, listOf(kDirectories), kDirectories, be(1, 4)};
    state.control.push_back(serverInitiate(transactionId(0, number), gateway));
    for (std::size_t first = 0; first < state.modules.size(); first += kModulesOfAList) {
        const std::size_t end = std::min(first + kModulesOfAList, state.modules.size());
        List list = state.list;
        list.transactionId = transactionId(listOf(state.modules[first].id), number);
        state.control.push_back(infoIndication(list, {state.modules.begin() + static_cast<std::ptrdiff_t>(first),
                                                      state.modules.begin() + static_cast<std::ptrdiff_t>(end)}));
    }
    return state;
}

}  // namespace

std::vector<CarouselState> carouselStates(const Carousel& carousel) {
    std::vector<CarouselState> states;
    states.reserve(carousel.versions.size());
    for (std::size_t number = 0; number < carousel.versions.size(); ++number) {
        states.push_back(stateOf(carousel, number, states.empty() ? nullptr : &states.back()));
    }
    return states;
}

CarouselSender::CarouselSender(const Carousel& newCarousel)
    : carousel(newCarousel), states(carouselStates(newCarousel)) {}

/// At most an eighth of the rate goes to control messages.
std::uint64_t CarouselSender::controlInterval() const {
    constexpr std::uint64_t kQuarter = kTicks / 4;
    std::uint64_t bits = 0;
    for (const Section& section : states[state].control) {
        bits += section.size() * 8;
    }
    return std::max(kQuarter, bits * 8 * kTicks / carousel.bitRate);
}

bool CarouselSender::isControlDue(std::uint64_t ticks) const {
    const bool beginsCycle = module == 0 && block == 0 && !hasControlOfCycle;
    return beginsCycle || ticks - lastControl >= controlInterval();
}

CarouselSender::Unit CarouselSender::next(std::uint64_t ticks) {
    const bool wasBegun = hasBegun;
    const std::size_t before = state;
    while (state + 1 < states.size() && states[state + 1].second * kTicks <= ticks) {
        ++state;
    }
    hasBegun = hasBegun || (!states.empty() && states[state].second * kTicks <= ticks);
    if (!hasBegun) {
        return {carousel.pid, {}};
    }
    const CarouselState& current = states[state];
    if (!wasBegun || before != state) {
        module = 0;
        block = 0;
        hasControlOfCycle = false;
        control = current.control.size();
    }
    if (control == current.control.size() && isControlDue(ticks)) {
        control = 0;
        lastControl = ticks;
        hasControlOfCycle = true;
    }
    if (control < current.control.size()) {
        return {carousel.pid, current.control[control++]};
    }
    const std::uint16_t pid = carousel.blockTag ? carousel.blockPid : carousel.pid;
    Unit unit = {pid, dataBlock(current.list, current.modules[module], block)};
    hasControlOfCycle = false;
    if (++block == blockCount(current.list, current.modules[module])) {
        block = 0;
        module = (module + 1) % current.modules.size();
    }
    return unit;
}

}  // namespace tsmake
