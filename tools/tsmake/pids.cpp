// Assigns PIDs.
#include <functional>
#include <map>

#include "multiplex.h"

namespace tsmake {

namespace {

constexpr std::uint16_t kFirst = 0x0100;
constexpr std::uint16_t kStep = 0x0100;
constexpr std::uint16_t kEnd = 0x1FFF;

/// Offsets from the PMT's PID of the same service, for streams without a given PID.
constexpr std::uint16_t kAitPlace = 5;
constexpr std::uint16_t kStreamEventPlace = 6;
constexpr std::uint16_t kCarouselPlace = 7;
constexpr std::uint16_t kOthersPlace = 0x10;

using Use = std::function<void(std::uint16_t& pid, std::uint16_t place, const std::string& what)>;

/// Calls `use` for each PID of a service, with its preferred offset.
void visit(Service& service, const Use& use) {
    use(service.pmtPid, 0, "PMT");
    constexpr std::size_t kNearComponents = 4;
    for (std::size_t index = 0; index < service.components.size(); ++index) {
        const std::size_t place = index < kNearComponents ? index + 1 : kOthersPlace + index;
        use(service.components[index].pid, static_cast<std::uint16_t>(place), "component " + std::to_string(index + 1));
    }
    if (!service.ait.versions.empty()) {
        use(service.ait.pid, kAitPlace, "AIT");
    }
    if (!service.streamEvents.events.empty()) {
        use(service.streamEvents.pid, kStreamEventPlace, "stream events");
    }
    if (!service.streamEvents.object.empty()) {
        use(service.streamEvents.carouselPid, kCarouselPlace, "carousel");
    }
    constexpr std::size_t kCarouselsPlace = 0x40;
    for (std::size_t index = 0; index < service.carousels.size(); ++index) {
        Carousel& carousel = service.carousels[index];
        use(carousel.pid, static_cast<std::uint16_t>(kCarouselsPlace + 2 * index), "carousel");
        if (carousel.blockTag) {
            use(carousel.blockPid, static_cast<std::uint16_t>(kCarouselsPlace + 2 * index + 1), "blocks of a carousel");
        }
    }
    constexpr std::size_t kPrivatePlace = 0x80;
    for (std::size_t index = 0; index < service.privateSections.size(); ++index) {
        use(service.privateSections[index].pid, static_cast<std::uint16_t>(kPrivatePlace + index), "private sections");
    }
}

}  // namespace

bool assignPids(Multiplex& multiplex, std::string& error) {
    std::map<std::uint16_t, std::string> taken;
    error.clear();
    const auto take = [&](std::uint16_t pid, const std::string& what) {
        const auto [other, isNew] = taken.try_emplace(pid, what);
        if (!isNew && error.empty()) {
            error = "PID " + std::to_string(pid) + " is given to " + other->second + " and to " + what;
        }
    };
    const auto nameIn = [](const Service& service, const std::string& what) {
        return what + " of service " + std::to_string(service.serviceId);
    };
    for (Service& service : multiplex.services) {
        visit(service, [&](std::uint16_t& pid, std::uint16_t, const std::string& what) {
            if (pid != 0) {
                take(pid, nameIn(service, what));
            }
        });
    }
    std::uint16_t base = kFirst;
    for (Service& service : multiplex.services) {
        visit(service, [&](std::uint16_t& pid, std::uint16_t place, const std::string& what) {
            if (pid != 0) {
                return;
            }
            pid = static_cast<std::uint16_t>(base + place);
            while (pid < kEnd && taken.count(pid) != 0) {
                ++pid;
            }
            if (pid >= kEnd && error.empty()) {
                error = "no PID is left for " + nameIn(service, what);
            }
            take(pid, nameIn(service, what));
        });
        base = static_cast<std::uint16_t>(base + kStep < kEnd ? base + kStep : kFirst);
    }
    return error.empty();
}

}  // namespace tsmake
