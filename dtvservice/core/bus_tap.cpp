// Records what happens, and keeps it for each monitor.
#include "bus_tap.h"

#include <utility>

#include "bus/origin.h"
#include "bus/pcapng.h"
#include "dtv_optional/peer_process.h"

namespace dtvservice {

std::optional<BusTap::Monitor> BusTap::join() {
    bus::Record record;
    record.time = bus::timeNow();
    record.kind = bus::Kind::connected;
    record.text = "before";
    const locks::Lock lock(mutex);
    if (monitors.size() >= kMostMonitors) {
        return std::nullopt;
    }
    bus::Backlog& backlog = monitors[++lastMonitor];
    for (const auto& [browser, program] : browsers) {
        record.browser = browser;
        record.process = program.process;
        record.program = program.name;
        backlog.add(bus::pcapngBlock(record));
    }
    watched = true;
    return lastMonitor;
}

void BusTap::leave(Monitor monitor) {
    const locks::Lock lock(mutex);
    monitors.erase(monitor);
    watched = !monitors.empty();
}

std::string BusTap::take(Monitor monitor) {
    const locks::Lock lock(mutex);
    const auto found = monitors.find(monitor);
    return found == monitors.end() ? std::string() : found->second.take();
}

void BusTap::connected(Browser browser) {
    const std::uint32_t process = dtv_optional::processOfPeer == nullptr ? 0 : dtv_optional::processOfPeer(browser);
    const Program program{process, process == 0 ? std::string() : bus::programOf(process)};
    {
        const locks::Lock lock(mutex);
        browsers[browser] = program;
    }
    if (isWatched()) {
        bus::Record record;
        record.kind = bus::Kind::connected;
        record.browser = browser;
        write(std::move(record));
    }
}

void BusTap::disconnected(Browser browser) {
    if (isWatched()) {
        bus::Record record;
        record.kind = bus::Kind::disconnected;
        record.browser = browser;
        write(std::move(record));
    }
    const locks::Lock lock(mutex);
    browsers.erase(browser);
}

std::string BusTap::programOf(Browser browser) {
    const locks::Lock lock(mutex);
    const auto found = browsers.find(browser);
    return found == browsers.end() ? std::string() : found->second.name;
}

void BusTap::message(bus::Direction direction, Browser browser, std::uint32_t identifier, std::string image) {
    bus::Record record;
    record.direction = direction;
    record.browser = browser;
    record.message = identifier;
    record.bytes = std::move(image);
    write(std::move(record));
}

void BusTap::refused(bus::Direction direction, Browser browser, std::uint32_t identifier, const std::string& why,
                     int result) {
    if (isWatched()) {
        bus::Record record;
        record.kind = bus::Kind::refused;
        record.direction = direction;
        record.browser = browser;
        record.message = identifier;
        record.result = result;
        record.text = why;
        write(std::move(record));
    }
}

void BusTap::section(Browser browser, const std::string& filter, std::string_view section, bool isQueued) {
    if (isWatched()) {
        bus::Record record;
        record.kind = isQueued ? bus::Kind::sectionQueued : bus::Kind::sectionDropped;
        record.direction = bus::Direction::toBrowser;
        record.browser = browser;
        record.text = filter;
        record.bytes = section;
        write(std::move(record));
    }
}

/// The time is taken under the lock, so that times and places in the buffers have one order.
void BusTap::write(bus::Record record) {
    const locks::Lock lock(mutex);
    if (const auto found = browsers.find(record.browser); found != browsers.end()) {
        record.process = found->second.process;
        record.program = found->second.name;
    }
    record.time = bus::timeNow();
    const std::string block = bus::pcapngBlock(record);
    for (auto& monitor : monitors) {
        monitor.second.add(block);
    }
}

}  // namespace dtvservice
