// The event queue between the transport thread and the thread that prints.
// Threads: the listener adds events on the transport thread; one other thread takes them.
// Blocks:  take() until its deadline; the listener never.
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
#include "locks/lock.h"
#include "message_fields.h"

namespace dvbshell {

using Clock = std::chrono::steady_clock;

/// `application` is an AIT section that the library's AIT catcher delivered, `filtered` a section of a section filter.
enum class EventKind { channel, aitChannel, pmt, eit, ait, application, filtered, other };

/// One event: `values` has what the listener received, except the section. The values that programs ask for stand
/// beside it once more.
struct Event {
    EventKind kind = EventKind::other;
    std::string name;                       ///< the listener's operation
    Clock::time_point time = Clock::now();  ///< arrival
    std::chrono::system_clock::time_point wallClock = std::chrono::system_clock::now();
    bool started = false;  ///< channel
    int onid = -1;         ///< each kind with a triplet
    int tsid = -1;
    int sid = -1;
    int update = 0;       ///< PMT, EIT
    std::string section;  ///< each kind that carries a section
    std::vector<message_fields::FieldValue> values;
};

/// The value of the field with this name, which must be one.
template <typename Value>
message_fields::FieldValue namedValue(const char* name, const Value& value) {
    return {message_fields::findField(name), message_fields::valueOf(value)};
}

/// The event's values, with its triplet first if they do not have it.
std::vector<message_fields::FieldValue> valuesOf(const Event& event);

class EventQueue {
public:
    void put(Event event);
    /// The next event, or none when none arrives before `until`.
    std::optional<Event> take(Clock::time_point until);

private:
    std::mutex mutex;
    std::condition_variable filled;
    std::deque<Event> events GUARDED_BY(mutex);
};

/// Receives the current channel and its AIT sections, on the transport thread.
class AitSink {
public:
    virtual ~AitSink() = default;
    virtual void onChannel(std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid) = 0;
    virtual void onAit(std::uint16_t onid, std::uint16_t tsid, std::uint16_t sid, const std::string& section) = 0;
};

/// A listener that copies each event into the queue and calls the sink, if any. Queue and sink must outlive it.
std::shared_ptr<velmora::dtv::DVBServiceListener> makeListener(EventQueue& queue, AitSink* sink = nullptr);

}  // namespace dvbshell
