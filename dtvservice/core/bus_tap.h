// BusTap: what the service and its browsers say to each other, for the monitors that want to see it. A monitor reads
// from a buffer of its own. What does not fit is lost for this monitor alone, and its reader is told how much.
// Threads: any.
// Blocks:  never.
// Locks:   mutex guards monitors and browsers; it is not held during a call out.
// Fails:   never. Without a monitor each operation is one look at a flag.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "bus/backlog.h"
#include "bus/record.h"
#include "locks/lock.h"
#include "message_image.h"

namespace dtvservice {

class BusTap {
public:
    static constexpr std::size_t kMostMonitors = 8;

    using Browser = std::uint32_t;
    using Monitor = std::uint32_t;

    bool isWatched() const { return watched.load(std::memory_order_relaxed); }

    /// A monitor, which sees everything from now on, first the browsers that are there; nothing if there are too many.
    std::optional<Monitor> join() EXCLUDES(mutex);
    void leave(Monitor monitor) EXCLUDES(mutex);
    /// The bytes that a monitor has not read yet.
    std::string take(Monitor monitor) EXCLUDES(mutex);

    // Browsers that come and go are kept without a monitor too.
    void connected(Browser browser) EXCLUDES(mutex);
    void disconnected(Browser browser) EXCLUDES(mutex);
    /// The name of a connected browser's program; empty if it is not known.
    std::string programOf(Browser browser) EXCLUDES(mutex);

    template <typename... Values>
    void command(Browser from, std::uint32_t identifier, const Values&... values) {
        if (isWatched()) {
            message(bus::Direction::toService, from, identifier, MessageImage::of(values...));
        }
    }
    template <typename... Values>
    void event(Browser to, std::uint32_t identifier, const Values&... values) {
        if (isWatched()) {
            message(bus::Direction::toBrowser, to, identifier, MessageImage::of(values...));
        }
    }
    /// A command that is not done, or an event that does not leave; `result` is the transport's error number or 0.
    void refused(bus::Direction direction, Browser browser, std::uint32_t identifier, const std::string& why,
                 int result = 0);
    /// A section for a filter of the browser.
    void section(Browser browser, const std::string& filter, std::string_view section, bool isQueued);

private:
    struct Program {
        std::uint32_t process = 0;
        std::string name;
    };

    void message(bus::Direction direction, Browser browser, std::uint32_t identifier, std::string image);
    void write(bus::Record record) EXCLUDES(mutex);

    std::atomic<bool> watched{false};
    std::mutex mutex;
    std::map<Browser, Program> browsers GUARDED_BY(mutex);
    std::map<Monitor, bus::Backlog> monitors GUARDED_BY(mutex);
    Monitor lastMonitor GUARDED_BY(mutex) = 0;
};

}  // namespace dtvservice
