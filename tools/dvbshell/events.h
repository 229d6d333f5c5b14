// Events of the library on their way from the transport thread to the one that prints.
// Threads: the listener puts events in on the transport thread, one other thread takes them out.
// Blocks:  take() until its time; the listener never.
// Locks:   the queue's mutex guards its events.
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "dvb_service_listener.h"

namespace dvbshell {

using Clock = std::chrono::steady_clock;

/// `application` is an AIT section that came back from the library's AIT catcher, `filtered` one of a section filter.
enum class EventKind { channel, aitChannel, pmt, eit, ait, application, filtered, other };

/// One event, as the listener got it.
struct Event {
    EventKind kind = EventKind::other;
    std::string name;  ///< the listener's operation
    Clock::time_point time = Clock::now();
    bool started = false;  ///< of a channel change
    int onid = -1;         ///< of channel, PMT, AIT and application
    int tsid = -1;
    int sid = -1;
    int update = 0;                                           ///< of PMT and EIT
    std::string section;                                      ///< of all that carry one
    std::vector<std::pair<std::string, std::string>> values;  ///< of the others, by name
};

class EventQueue {
public:
    void put(Event event);
    /// The next event, or none when the time has come first.
    std::optional<Event> take(Clock::time_point until);

private:
    std::mutex mutex;
    std::condition_variable filled;
    std::deque<Event> events;  // guarded by mutex
};

/// Told, on the transport thread, which channel is current and what AIT sections come for it.
class AitSink {
public:
    virtual ~AitSink() = default;
    virtual void onChannel(std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid) = 0;
    virtual void onAit(std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid, const std::string& section) = 0;
};

/// A listener that copies what it hears into the queue, and tells the sink, if there is one. Both have to
/// outlive it.
std::shared_ptr<velmora::dtv::DVBServiceListener> makeListener(EventQueue& queue, AitSink* sink = nullptr);

}  // namespace dvbshell
