// Records what happens, and keeps it for each monitor.
#include "bus_tap.h"

#include <chrono>
#include <fstream>
#include <limits>
#include <utility>

#include "bus/pcapng.h"
#include "dtv_optional/peer_process.h"

namespace dtvservice {

namespace {

std::uint64_t now() {
    const auto time = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(time).count());
}

/// The name that the system has for the program of a process; empty if it has gone.
std::string programOf(std::uint32_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/comm");
    std::string name;
    std::getline(file, name);
    return name;
}

}  // namespace

std::optional<BusTap::Monitor> BusTap::join() {
    bus::Record record;
    record.time = now();
    record.kind = bus::Kind::connected;
    record.text = "before";
    const locks::Lock lock(mutex);
    if (monitors.size() >= kMostMonitors) {
        return std::nullopt;
    }
    Waiting waiting{bus::pcapngStart()};
    for (const auto& [browser, program] : browsers) {
        record.browser = browser;
        record.process = program.process;
        record.program = program.name;
        append(waiting, bus::pcapngBlock(record));
    }
    monitors.emplace(++lastMonitor, std::move(waiting));
    watched = true;
    return lastMonitor;
}

void BusTap::leave(Monitor monitor) {
    const locks::Lock lock(mutex);
    monitors.erase(monitor);
    watched = !monitors.empty();
}

std::string BusTap::take(Monitor monitor) {
    bus::Record record;
    record.time = now();
    record.kind = bus::Kind::lost;
    const locks::Lock lock(mutex);
    const auto found = monitors.find(monitor);
    if (found == monitors.end()) {
        return "";
    }
    Waiting taken = std::exchange(found->second, Waiting());
    if (taken.lost != 0) {
        record.count = taken.lost;
        taken.bytes += bus::pcapngBlock(record);
    }
    return std::move(taken.bytes);
}

void BusTap::connected(Browser browser) {
    const std::uint32_t process = dtv_optional::processOfPeer == nullptr ? 0 : dtv_optional::processOfPeer(browser);
    const Program program{process, process == 0 ? std::string() : programOf(process)};
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
    record.time = now();
    const std::string block = bus::pcapngBlock(record);
    for (auto& monitor : monitors) {
        append(monitor.second, block);
    }
}

/// Behind the first lost record all are lost until the monitor reads, so that the loss is at one place.
void BusTap::append(Waiting& to, const std::string& block) {
    if (to.lost == 0 && to.bytes.size() + block.size() <= kMostWaiting) {
        to.bytes += block;
    } else if (to.lost != std::numeric_limits<std::uint32_t>::max()) {
        ++to.lost;
    }
}

}  // namespace dtvservice
